#pragma once

#include <QZDateTime/Names/NameSource.h>

namespace qz {

/// English names without any library: for locales that name no language, and where the names module cannot be opened.
/// Weeks begin on Monday, as they do where no territory says otherwise.
class EnglishNames final : public NameSource {
 public:
  [[nodiscard]] std::string weekday(int day, Width width) const override;
  [[nodiscard]] std::string month(int month, Width width) const override;
  [[nodiscard]] std::string date(Pattern pattern, std::int64_t number) const override;
  [[nodiscard]] int firstWeekday() const override;
};

}  // namespace qz
