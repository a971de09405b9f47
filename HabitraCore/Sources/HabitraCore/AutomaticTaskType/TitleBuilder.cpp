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

void replaceAll(std::string& text, std::string_view what, std::string_view by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
}

std::string withBreaks(std::string text, bool lineBreaks) {
  std::replace(text.begin(), text.end(), '|', lineBreaks ? '\n' : ' ');
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

/// One target in the words of one language.
class Wording {
 public:
  Wording(const TitleTexts& texts, const TitleTarget& target, bool isNegative, std::int64_t count)
      : texts_(texts), target_(target), isNegative_(isNegative), count_(std::max<std::int64_t>(count, 1)) {
    if (target.quantity && target.unit) amount_ = Amount{*target.quantity, *target.unit};
  }

  /// In the words of the first of the rows that fits.
  [[nodiscard]] TaskDisplayTitle title(std::span<const TitleRow> rows, bool lineBreaks) const {
    const auto row = std::find_if(rows.begin(), rows.end(), [this](const TitleRow& r) { return fits(r); });
    qz::require(row != rows.end(), "every target has a title");
    std::string title = withBreaks(filled(textOf(*row), places(*row)), lineBreaks);
    const TitlePlace quantity[] = {{"quantity", quantityOf(*row)}};
    std::string formatted = filled(title, quantity);
    return {std::move(title), std::move(formatted)};
  }

  /// The amount in its own words, or how often where there is no amount.
  [[nodiscard]] std::string amountOrTimes() const {
    if (amount_) return formattedQuantity(texts_, amount_->quantity, amount_->unit);
    return count_ > 1 ? times() : "";
  }

  /// Whether a task to avoid fails at any at all.
  [[nodiscard]] bool anyFails() const {
    return isNegative_ && count_ == 1 && amount_ && amount_->unit.isCounted() && amount_->quantity <= 1;
  }

 private:
  [[nodiscard]] bool fits(const TitleRow& row) const {
    if (row.form && row.form != target_.form) return false;
    if (row.type && row.type != target_.healthType) return false;
    if (row.amount.given != amount_.has_value()) return false;
    if (row.amount.dimension && row.amount.dimension != amount_->unit.dimension()) return false;
    return target_.speeds.contains(row.allOf) && (row.oneOf.isEmpty() || !(target_.speeds & row.oneOf).isEmpty());
  }

  /// The template of a row for the sign and the number of completions, with what the language puts around it.
  [[nodiscard]] std::string textOf(const TitleRow& row) const {
    const std::string_view text = isNegative_ ? row.toAvoid : row.toDo;
    if (count_ == 1) return std::string(text);
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

  [[nodiscard]] std::string quantityOf(const TitleRow& row) const {
    if (!amount_) return "";
    return row.amountTexts.other.empty() ? formattedQuantity(texts_, amount_->quantity, amount_->unit)
                                         : formattedQuantity(texts_, amount_->quantity, amount_->unit, row.amountTexts);
  }

  [[nodiscard]] std::string times() const {
    if (count_ == 2) return std::string(texts_.twice);
    const TitlePlace places[] = {{"count", formattedCount(texts_, count_)}};
    return filled(texts_.manyTimes, places);
  }

  /// What one completion has to reach. A duration is put in a finer unit where its own would show it rounded or as a
  /// fraction of one: "30 minutes", not "0.5 hours".
  [[nodiscard]] std::string part() const {
    if (!amount_) return "";
    const double share = amount_->quantity / static_cast<double>(count_);
    if (!amount_->unit.isDuration()) return formattedQuantity(texts_, share, amount_->unit);
    constexpr std::array<TypeUnit, 3> coarsestFirst{TypeUnit::durationHours, TypeUnit::durationMinutes,
                                                    TypeUnit::durationSeconds};
    auto unit = std::find(coarsestFirst.begin(), coarsestFirst.end(), amount_->unit);
    while (*unit != TypeUnit::durationSeconds && !readsWell(*amount_->unit.convert(share, *unit), *unit)) ++unit;
    return formattedQuantity(texts_, *amount_->unit.convert(share, *unit), *unit);
  }

  [[nodiscard]] static bool readsWell(double quantity, TypeUnit unit) {
    constexpr double tolerance = 1e-9;
    constexpr double tooGreatToSplit = 1e15;
    if (std::abs(quantity) >= tooGreatToSplit) return true;
    const double scaled = quantity * std::pow(10.0, static_cast<double>(unit.decimals()));
    return std::abs(quantity) >= 1 && std::abs(scaled - std::round(scaled)) <= tolerance * std::abs(scaled);
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

/// The task's own words with the amount in its place; where there is none, its blank goes with it.
std::string customTitle(std::string text, const std::string& quantity) {
  if (quantity.empty()) {
    replaceAll(text, " {quantity}", "");
    replaceAll(text, "{quantity} ", "");
  }
  replaceAll(text, quantityPlace, quantity);
  return text;
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
  if (options.customText && !options.customText->empty()) {
    const std::string& own = *options.customText;
    if (own.find(quantityPlace) != std::string::npos) {
      return Type::integrated({own, customTitle(own, wording.amountOrTimes())});
    }
    return Type::separate(wording.title(texts.targets, options.lineBreaks).titleFormatted);
  }
  if (!wording.anyFails()) return Type::integrated(wording.title(texts.titles, options.lineBreaks));
  const Wording anyAtAll(texts, withoutAmount(target), options.isNegative, options.numPartialCompletions);
  return Type::integrated(anyAtAll.title(texts.titles, options.lineBreaks));
}

HealthType::DisplayTitleType displayTitle(TitleForm form, std::optional<HealthType> healthType,
                                          std::optional<double> quantity, std::optional<TypeUnit> unit,
                                          TypeSpeeds speeds, const DisplayTitleOptions& options) {
  return displayTitle(englishTitles, {form, healthType, quantity, unit, speeds}, options);
}

}  // namespace habitra
