#pragma once

#include <HabitraCLI/Terminal.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// "storing [#####               ]  27 %", at most `columns` wide. `share` is from 0 to 1; what lies outside is cut.
[[nodiscard]] std::string progressLine(std::string_view step, double share, std::size_t columns);

/// Shows on standard error how far something long has come, on one line that is drawn over and goes in the end. Nothing
/// is shown where that is no terminal, nor before half a second has passed. Belongs to one thread.
class ProgressBar {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds patience{500};
  static constexpr std::chrono::milliseconds timeBetweenDrawings{100};

  ProgressBar();
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void show(std::string_view step, double share);

 private:
  void draw(std::string_view line);

  const std::optional<std::size_t> columns_;  ///< none: no terminal
  Clock::time_point next_;                    ///< not before
  std::size_t drawn_ = 0;                     ///< columns of the line that is there
};

}  // namespace habitra
