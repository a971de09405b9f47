#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace habitra {

/// Who writes to the store. The raw value is the text kept with each transaction.
enum class Author { app, today, notification, widget, siri, siriUI, deviceActivity };

inline constexpr std::array allAuthors{Author::app,  Author::today,  Author::notification,  Author::widget,
                                       Author::siri, Author::siriUI, Author::deviceActivity};

[[nodiscard]] std::string_view rawValue(Author author);
[[nodiscard]] std::optional<Author> authorFromRawValue(std::string_view raw);

}  // namespace habitra
