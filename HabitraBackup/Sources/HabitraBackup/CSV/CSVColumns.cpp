#include <HabitraBackup/CSV/CSVColumns.h>
#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/Files/ByteOrderMark.h>
#include <QZKit/EditDistance.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <fmt/ranges.h>
#include <algorithm>
#include <string>
#include <vector>

namespace habitra {

namespace {

// A message lists at most so many of the names that a header holds.
constexpr std::size_t mostNamesListed = 9;

// The edit distance that still is a slip of the pen. Of short names it is one letter: a file may have a "date" or a
// "name" of its own beside "page".
constexpr std::size_t slip(std::string_view known) { return known.size() < 7 ? 1 : 2; }

bool isSlip(std::string_view name, std::string_view known) {
  return name.size() <= known.size() + slip(known) && qz::editDistance(name, known) <= slip(known);
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

CSVColumns::CSVColumns(const CSVColumnNames& format, std::size_t line, std::span<const std::string_view> names)
    : positions_(format.known.size()) {
  std::vector<std::string_view> unknown;
  for (std::size_t position = 0; position < names.size(); ++position) {
    if (names[position].starts_with(byteOrderMark))
      throw CSVError(line, {},
                     "the name of a column begins with a byte-order mark; it may stand only once, at the very start");
    const auto known = std::ranges::find(format.known, names[position]);
    if (known == format.known.end()) {
      unknown.push_back(names[position]);
      continue;
    }
    auto& found = positions_[static_cast<std::size_t>(known - format.known.begin())];
    if (found) throw CSVError(line, *known, "the header names this column twice");
    found = position;
  }
  for (std::size_t index = 0; index < format.known.size(); ++index) {
    if (positions_[index]) continue;
    for (const std::string_view name : unknown) {
      if (!isSlip(name, format.known[index])) continue;
      throw CSVError(
          line, {},
          fmt::format("unknown column {}, did you mean \"{}\"?", qz::utf8::quoted(name), format.known[index]));
    }
  }
  for (const std::size_t index : format.required) {
    if (positions_[index]) continue;
    throw CSVError(line, {},
                   fmt::format("no column \"{}\" in the header {}; expected {}", format.known[index], listed(names),
                               fmt::join(format.known, ",")));
  }
}

}  // namespace habitra
