#include <HabitraBackup/CSVColumns.h>
#include <HabitraBackup/CSVError.h>
#include <QZKit/EditDistance.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <fmt/ranges.h>
#include <algorithm>
#include <string>
#include <vector>

namespace habitra {

namespace {

// An edit distance of so many still is a slip of the pen.
constexpr std::size_t slip = 2;
// A message lists at most so many of the names that a header holds.
constexpr std::size_t mostNamesListed = 9;

bool isSlip(std::string_view name, std::string_view known) {
  return name.size() <= known.size() + slip && qz::editDistance(name, known) <= slip;
}

std::string listed(std::span<const std::string_view> names) {
  std::vector<std::string> texts;
  for (const std::string_view name : names.first(std::min(names.size(), mostNamesListed))) {
    texts.push_back(qz::utf8::quoted(name));
  }
  if (names.size() > mostNamesListed) texts.emplace_back("...");
  return fmt::format("{}", fmt::join(texts, ", "));
}

}  // namespace

CSVColumns::CSVColumns(std::size_t line, std::span<const std::string_view> names) {
  std::vector<std::string_view> unknown;
  for (std::size_t position = 0; position < names.size(); ++position) {
    const auto* known = std::ranges::find(csvColumnHeaders, names[position]);
    if (known == csvColumnHeaders.end()) {
      unknown.push_back(names[position]);
      continue;
    }
    auto& found = positions_[static_cast<std::size_t>(known - csvColumnHeaders.begin())];
    if (found) throw CSVError(line, *known, "the header names this column twice");
    found = position;
  }
  for (std::size_t index = 0; index < csvColumnHeaders.size(); ++index) {
    if (positions_[index]) continue;
    for (const std::string_view name : unknown) {
      if (!isSlip(name, csvColumnHeaders[index])) continue;
      throw CSVError(
          line, {},
          fmt::format("unknown column {}, did you mean \"{}\"?", qz::utf8::quoted(name), csvColumnHeaders[index]));
    }
  }
  const std::size_t title = 1;
  if (!positions_[title]) {
    throw CSVError(line, {},
                   fmt::format("no column \"title\" in the header {}; expected {}", listed(names),
                               fmt::join(csvColumnHeaders, ",")));
  }
}

}  // namespace habitra
