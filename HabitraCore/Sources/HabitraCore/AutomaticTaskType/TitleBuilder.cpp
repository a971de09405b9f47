#include <HabitraCore/AutomaticTaskType/TitleBuilder.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace habitra {

namespace {

constexpr std::string_view quantityPlace = "{quantity}";
constexpr std::string_view blanks = " \t\r\n";

std::string withBreaks(std::string text, bool lineBreaks) {
  std::replace(text.begin(), text.end(), '|', lineBreaks ? '\n' : ' ');
  return text;
}

std::string withBlanksForBreaks(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

TitleTarget withoutAmount(TitleTarget target) {
  target.quantity.reset();
  target.unit.reset();
  return target;
}

struct Amount {
  double quantity;
  TypeUnit unit;
};

/// Whether it is less than one of its unit.
bool isFractionOfOne(const Amount& amount) { return amount.quantity != 0 && std::abs(amount.quantity) < 1; }

/// Whether the decimals that its unit shows do not tell all of it.
bool isShownRounded(const Amount& amount) {
  constexpr double tolerance = 1e-9;
  constexpr double tooGreatForDecimals = 1e15;
  if (std::abs(amount.quantity) >= tooGreatForDecimals) return false;
  const double scaled = amount.quantity * std::pow(10.0, static_cast<double>(amount.unit.decimals()));
  return std::abs(scaled - std::round(scaled)) > tolerance * std::abs(scaled);
}

/// A duration in the first unit, from its own on to finer ones, in which it does not read badly; any other amount as it
/// is.
Amount inFinerUnitWhere(bool (*readsBadly)(const Amount&), const Amount& amount) {
  if (!amount.unit.isDuration()) return amount;
  constexpr std::array<TypeUnit, 3> coarsestFirst{TypeUnit::durationHours, TypeUnit::durationMinutes,
                                                  TypeUnit::durationSeconds};
  auto unit = std::find(coarsestFirst.begin(), coarsestFirst.end(), amount.unit);
  const auto shown = [&] { return Amount{*amount.unit.convert(amount.quantity, *unit), *unit}; };
  while (*unit != TypeUnit::durationSeconds && readsBadly(shown())) ++unit;
  return shown();
}

/// One target in the words of one language.
class Wording {
 public:
  Wording(const TitleTexts& texts, const TitleTarget& target, bool isNegative, std::int64_t count)
      : texts_(texts), target_(target), isNegative_(isNegative), count_(std::max<std::int64_t>(count, 1)) {
    if (target.quantity && target.unit) amount_ = Amount{*target.quantity, *target.unit};
  }

  /// In the words of the first of the rows that fits.
  [[nodiscard]] TaskDisplayTitle title(std::span<const TitleRow> rows, bool lineBreaks) const {
    const TitleRow& row = firstFit(rows);
    std::string title = withBreaks(filled(textOf(row), places(row)), lineBreaks);
    const TitlePlace places[] = {{"quantity", quantity()}};
    std::string formatted = filled(title, places);
    return {std::move(title), std::move(formatted)};
  }

  /// The amount as the title says it, or how often where there is no amount.
  [[nodiscard]] std::string amountOrTimes() const {
    if (amount_) return quantity();
    return count_ > 1 ? times() : "";
  }

 private:
  [[nodiscard]] const TitleRow& firstFit(std::span<const TitleRow> rows) const {
    const auto row = std::find_if(rows.begin(), rows.end(), [this](const TitleRow& r) { return fits(r); });
    qz::require(row != rows.end(), "every target has a title");
    return *row;
  }

  [[nodiscard]] bool fits(const TitleRow& row) const {
    if (row.form && row.form != target_.form) return false;
    if (row.type && row.type != target_.healthType) return false;
    if (row.amount.given != amount_.has_value()) return false;
    if (row.amount.dimension && row.amount.dimension != amount_->unit.dimension()) return false;
    if (row.amount.unit && row.amount.unit != amount_->unit) return false;
    return target_.speeds.contains(row.allOf) && (row.oneOf.isEmpty() || !(target_.speeds & row.oneOf).isEmpty());
  }

  /// Whether the number of completions is worth a word: not of an amount to avoid, of which parts mean nothing, nor of
  /// a time of day, which has none.
  [[nodiscard]] bool isInParts() const {
    if (count_ == 1 || !amount_) return count_ > 1;
    return !isNegative_ && amount_->unit.isQuantifiable();
  }

  /// The template of a row for the sign and the number of completions, with what the language puts around it.
  [[nodiscard]] std::string textOf(const TitleRow& row) const {
    const std::string_view text = isNegative_ ? row.toAvoid : row.toDo;
    if (!isInParts()) return std::string(text);
    const std::string_view own = isNegative_ ? row.toAvoidInParts : row.toDoInParts;
    if (!own.empty()) return std::string(own);
    if (row.amount.given) return around(texts_.inParts, text);
    return around(isNegative_ ? texts_.timesToAvoid : texts_.times, row.toDo);
  }

  [[nodiscard]] static std::string around(std::string_view wrapper, std::string_view title) {
    const TitlePlace places[] = {{"title", std::string(title)}};
    return filled(wrapper, places);
  }

  [[nodiscard]] std::vector<TitlePlace> places(const TitleRow& row) const {
    return {{"count", formattedCount(texts_, count_)},
            {"times", times()},
            {"part", part()},
            {"speeds", speeds(row)},
            {"noun", std::string(noun().one)},
            {"nouns", std::string(noun().other)},
            {"title", bareTitle(row)}};
  }

  /// The amount in the words of the target's title, whichever text it stands in.
  [[nodiscard]] std::string quantity() const {
    if (!amount_) return "";
    const CountTexts& own = firstFit(texts_.titles).amountTexts;
    if (!own.other.empty()) return formattedQuantity(texts_, amount_->quantity, amount_->unit, own);
    const Amount shown = inFinerUnitWhere(isFractionOfOne, *amount_);
    return formattedQuantity(texts_, shown.quantity, shown.unit);
  }

  [[nodiscard]] std::string times() const {
    if (count_ == 2) return std::string(texts_.twice);
    const TitlePlace places[] = {{"count", formattedCount(texts_, count_)}};
    return filled(texts_.manyTimes, places);
  }

  /// What one completion has to reach, in a unit that shows it as it is: "3 × 200 seconds", not 3.3 minutes.
  [[nodiscard]] std::string part() const {
    if (!amount_) return "";
    const auto readsBadly = [](const Amount& amount) { return isFractionOfOne(amount) || isShownRounded(amount); };
    const double share = amount_->quantity / static_cast<double>(count_);
    const Amount shown = inFinerUnitWhere(readsBadly, {share, amount_->unit});
    return formattedQuantity(texts_, shown.quantity, shown.unit);
  }

  [[nodiscard]] std::string speeds(const TitleRow& row) const {
    std::vector<std::string_view> words;
    const TypeSpeeds named = target_.speeds & row.oneOf;
    for (const SpeedText& speed : texts_.speeds) {
      if (named.contains(speed.speed)) words.push_back(speed.word);
    }
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i) {
      if (i > 0) list += i + 1 == words.size() ? texts_.listEnd : texts_.listSeparator;
      list += words[i];
    }
    return list;
  }

  [[nodiscard]] CountTexts noun() const {
    for (const NounTexts& noun : texts_.nouns) {
      if (noun.type == target_.healthType) return noun.noun;
    }
    return {};
  }

  /// The title of the target without its amount, for a row that puts something around it.
  [[nodiscard]] std::string bareTitle(const TitleRow& row) const {
    if (row.toDo.find("{title}") == std::string_view::npos) return "";
    return Wording(texts_, withoutAmount(target_), false, 1).title(texts_.titles, false).title;
  }

  const TitleTexts& texts_;
  TitleTarget target_;
  bool isNegative_;
  std::int64_t count_;
  std::optional<Amount> amount_;
};

bool isBlank(std::string_view text) { return text.find_first_not_of(blanks) == std::string_view::npos; }

bool isBlankAt(const std::string& text, std::size_t at) { return at < text.size() && isBlank({&text[at], 1}); }

/// The task's own words with the amount in its place; where there is none, a blank goes with it.
std::string customTitle(std::string text, const std::string& quantity) {
  for (std::size_t at = text.find(quantityPlace); at != std::string::npos; at = text.find(quantityPlace, at)) {
    std::size_t length = quantityPlace.size();
    if (quantity.empty() && at > 0 && isBlankAt(text, at - 1)) {
      --at;
      ++length;
    } else if (quantity.empty() && isBlankAt(text, at + length)) {
      ++length;
    }
    text.replace(at, length, quantity);
    at += quantity.size();
  }
  return text;
}

/// Whether any at all fails: of something to avoid, one thing or nothing. A balance can be below nothing, and 0 o'clock
/// is a time like any other.
bool anyFails(const TitleTarget& target, bool isNegative) {
  if (!isNegative || !target.quantity || !target.unit || target.form == TitleForm::energyDeficit) return false;
  if (!target.unit->isQuantifiable()) return false;
  return *target.quantity <= (target.unit->isCounted() ? 1 : 0);
}

}  // namespace

std::string filled(std::string_view text, std::span<const TitlePlace> places) {
  std::string result;
  while (!text.empty()) {
    const auto place = std::find_if(places.begin(), places.end(), [text](const TitlePlace& p) {
      return text.starts_with('{') && text.substr(1).starts_with(p.name) &&
             text.substr(1 + p.name.size()).starts_with('}');
    });
    if (place == places.end()) {
      result += text.front();
      text.remove_prefix(1);
    } else {
      result += place->value;
      text.remove_prefix(place->name.size() + 2);
    }
  }
  return result;
}

HealthType::DisplayTitleType displayTitle(const TitleTexts& texts, const TitleTarget& target,
                                          const DisplayTitleOptions& options) {
  using Type = HealthType::DisplayTitleType;
  const Wording wording(texts, target, options.isNegative, options.numPartialCompletions);
  const bool isAnyAtAll = anyFails(target, options.isNegative);
  const Wording titleWording = isAnyAtAll ? Wording(texts, withoutAmount(target), options.isNegative, 1) : wording;
  TaskDisplayTitle title = titleWording.title(texts.titles, options.lineBreaks);

  const std::string own = options.customText.value_or("");
  if (own.find(quantityPlace) != std::string::npos) {
    std::string formatted = customTitle(own, wording.amountOrTimes());
    if (!isBlank(formatted)) return Type::integrated({own, std::move(formatted)});
  } else if (!isBlank(own) && withBlanksForBreaks(own) != withBlanksForBreaks(title.title)) {
    if (isAnyAtAll) return Type::separate(std::move(title.titleFormatted));
    return Type::separate(wording.title(texts.targets, options.lineBreaks).titleFormatted);
  }
  return Type::integrated(std::move(title));
}

HealthType::DisplayTitleType displayTitle(TitleForm form, std::optional<HealthType> healthType,
                                          std::optional<double> quantity, std::optional<TypeUnit> unit,
                                          TypeSpeeds speeds, const DisplayTitleOptions& options) {
  return displayTitle(englishTitles, {form, healthType, quantity, unit, speeds}, options);
}

}  // namespace habitra
