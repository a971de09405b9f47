#include <HabitraModel/Store/Author.h>

namespace habitra {

namespace {

constexpr std::array<std::string_view, allAuthors.size()> names{
    "app", "ext_today", "ext_notification", "ext_widget", "ext_siri", "ext_siriUI", "ext_deviceActivity"};

}  // namespace

std::string_view rawValue(Author author) { return names[static_cast<std::size_t>(author)]; }

std::optional<Author> authorFromRawValue(std::string_view raw) {
  for (const Author author : allAuthors)
    if (rawValue(author) == raw) return author;
  return std::nullopt;
}

}  // namespace habitra
