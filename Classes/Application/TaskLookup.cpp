#include <HabitraApp/TaskLookup.h>
#include <QZKit/EditDistance.h>
#include <QZKit/UTF8.h>

#include <fmt/format.h>
#include <algorithm>
#include <clocale>
#include <cwctype>
#include <optional>
#include <utility>

namespace habitra {
namespace {

/// Folds the case of UTF-8 text by the rules of C.UTF-8, whatever locale the program runs in. Bytes that are not UTF-8
/// stand for themselves.
class CaseFolding {
 public:
  CaseFolding() : locale_(::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {}
  ~CaseFolding() {
    if (locale_ != nullptr) ::freelocale(locale_);
  }
  CaseFolding(const CaseFolding&) = delete;
  CaseFolding& operator=(const CaseFolding&) = delete;

  [[nodiscard]] std::u32string fold(std::string_view text) const {
    std::u32string folded;
    while (!text.empty()) {
      const auto next = qz::utf8::firstCharacter(text);
      folded.push_back(lower(next ? next->value : static_cast<unsigned char>(text.front())));
      text.remove_prefix(next ? next->length : 1);
    }
    return folded;
  }

 private:
  [[nodiscard]] char32_t lower(char32_t point) const {
    if (point < 0x80) return point >= U'A' && point <= U'Z' ? point + 32 : point;
    return locale_ == nullptr ? point : static_cast<char32_t>(::towlower_l(static_cast<wint_t>(point), locale_));
  }

  locale_t locale_;
};

/// Longer names than this are looked for by what they contain only.
constexpr std::size_t longestCompared = 500;

std::vector<std::size_t> placesWhere(std::span<const TaskName> tasks, auto&& holds) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    if (holds(tasks[i])) places.push_back(i);
  }
  return places;
}

TaskNameError ambiguous(std::span<const TaskName> tasks, const std::vector<std::size_t>& places,
                        std::string_view name) {
  std::string candidates;
  for (const std::size_t place : places) {
    candidates +=
        fmt::format("{}'{}' ({})", candidates.empty() ? "" : ", ", tasks[place].title, tasks[place].uniqueId.text());
  }
  return TaskNameError(fmt::format("'{}' can mean {} habits: {}", name, places.size(), candidates));
}

TaskNameError unknown(std::span<const TaskName> tasks, std::string_view name) {
  std::vector<std::string> titles;
  for (const TaskName& task : tasks) titles.push_back(task.title);
  return TaskNameError(fmt::format("no habit is called '{}'{}", name, didYouMean(name, titles)));
}

}  // namespace

std::size_t lookUpTask(std::span<const TaskName> tasks, std::string_view name) {
  const auto decided = [&](const std::vector<std::size_t>& places) -> std::optional<std::size_t> {
    if (places.size() > 1) throw ambiguous(tasks, places, name);
    return places.empty() ? std::nullopt : std::optional(places.front());
  };

  if (const auto id = qz::UniqueID::fromText(name)) {
    if (const auto place = decided(placesWhere(tasks, [&](const TaskName& task) { return task.uniqueId == *id; })))
      return *place;
  }
  if (const auto place = decided(placesWhere(tasks, [&](const TaskName& task) { return task.title == name; })))
    return *place;

  const CaseFolding folding;
  const std::u32string wanted = folding.fold(name);
  if (const auto place =
          decided(placesWhere(tasks, [&](const TaskName& task) { return folding.fold(task.title) == wanted; })))
    return *place;
  if (!wanted.empty()) {
    if (const auto place = decided(
            placesWhere(tasks, [&](const TaskName& task) { return folding.fold(task.title).starts_with(wanted); })))
      return *place;
  }
  throw unknown(tasks, name);
}

std::vector<std::string> nearestMatches(std::string_view word, std::span<const std::string> words, std::size_t count) {
  const CaseFolding folding;
  const std::u32string wanted = folding.fold(word);
  std::vector<std::pair<std::size_t, std::string>> near;
  for (const std::string& candidate : words) {
    const std::u32string folded = folding.fold(candidate);
    const bool contains = wanted.size() >= 3 && folded.find(wanted) != std::u32string::npos;
    // A third of the letters wrong is a slip of the finger; more is another word.
    const auto [shorter, longer] = std::minmax({wanted.size(), folded.size()});
    const std::size_t allowed = std::max<std::size_t>(1, longer / 3);
    // Texts of very different lengths are not compared letter by letter, nor ones too long to be typed.
    const bool isComparable = longer - shorter <= allowed && longer <= longestCompared;
    const std::size_t distance = isComparable ? qz::editDistance(wanted, folded) : allowed + 1;
    if (distance <= allowed || contains)
      near.emplace_back(contains ? std::min<std::size_t>(distance, allowed) : distance, candidate);
  }
  std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> result;
  for (auto& [distance, candidate] : near) {
    if (result.size() == count) break;
    if (std::find(result.begin(), result.end(), candidate) == result.end()) result.push_back(std::move(candidate));
  }
  return result;
}

std::string didYouMean(std::string_view word, std::span<const std::string> words) {
  const std::vector<std::string> near = nearestMatches(word, words);
  std::string text;
  for (std::size_t i = 0; i < near.size(); ++i)
    text += fmt::format("{}'{}'", i == 0 ? ", did you mean " : i + 1 == near.size() ? " or " : ", ", near[i]);
  return near.empty() ? text : text + "?";
}

}  // namespace habitra
