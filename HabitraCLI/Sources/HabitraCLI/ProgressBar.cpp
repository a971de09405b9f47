#include <HabitraCLI/ProgressBar.h>

#include <fmt/format.h>
#include <unistd.h>
#include <algorithm>
#include <cmath>
#include <cstdio>

namespace habitra {
namespace {

constexpr int standardError = 2;
constexpr std::size_t usualColumns = 80;
constexpr std::size_t widestBar = 40;

std::optional<std::size_t> columnsOf(int descriptor) {
  if (::isatty(descriptor) == 0) return std::nullopt;
  return Terminal::of(descriptor).columns.value_or(usualColumns);
}

}  // namespace

std::string progressLine(std::string_view step, double share, std::size_t columns) {
  const double known = std::isfinite(share) ? std::clamp(share, 0.0, 1.0) : 0.0;
  const auto percent = static_cast<int>(known * 100);
  const std::string begin = fmt::format("{} [", step);
  const std::string end = fmt::format("] {:>3} %", percent);
  const std::size_t frame = begin.size() + end.size();
  if (columns <= frame) return fmt::format("{:>3} %", percent).substr(0, columns);
  const std::size_t width = std::min(columns - frame, widestBar);
  const auto filled = static_cast<std::size_t>(known * static_cast<double>(width));
  return begin + std::string(filled, '#') + std::string(width - filled, ' ') + end;
}

ProgressBar::ProgressBar() : columns_(columnsOf(standardError)), next_(Clock::now() + patience) {}

ProgressBar::~ProgressBar() {
  if (drawn_ > 0) draw("");
}

void ProgressBar::show(std::string_view step, double share) {
  if (!columns_) return;
  const auto now = Clock::now();
  if (now < next_) return;
  next_ = now + timeBetweenDrawings;
  // The last column stays free: a terminal would begin another line.
  draw(progressLine(step, share, *columns_ - std::min<std::size_t>(*columns_, 1)));
}

void ProgressBar::draw(std::string_view line) {
  const std::string rest(drawn_ > line.size() ? drawn_ - line.size() : 0, ' ');
  std::fprintf(stderr, "\r%.*s%s%s", static_cast<int>(line.size()), line.data(), rest.c_str(),
               line.empty() ? "\r" : "");
  std::fflush(stderr);
  drawn_ = line.size();
}

}  // namespace habitra
