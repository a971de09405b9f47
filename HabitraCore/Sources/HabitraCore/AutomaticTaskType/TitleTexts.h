#pragma once

#include <HabitraCore/AutomaticTaskType/HealthTypeTable.h>

#include <array>
#include <optional>
#include <span>
#include <string_view>

/// All that a language says about targets, as one table: another language is another such table. For sources of this
/// module.
///
/// Texts are templates. Places in braces are filled in, "|" is a natural break of the line:
///   {quantity}  the amount with its unit, "2 litres"
///   {part}      the amount of one completion with its unit, where the target is split: "10 minutes"
///   {count}     the number of completions
///   {times}     the same as it is spoken, "twice", "3 times"
///   {speeds}    the chosen ones among those that the row asks for, "deep and REM"
///   {noun}, {nouns}  what the health type is called, one and several
///   {title}     the title that a text is put around
///   {number}    in the texts of a unit: the bare number
/// Of a time of day: {hour24}, {hour12}, {minute} (two digits all but hour12) and {half}.
namespace habitra {

/// A text for one and a text for any other number. Which one is right is decided by the number as it is shown.
struct CountTexts {
  std::string_view one;
  std::string_view other;
};

struct UnitTexts {
  TypeUnit unit;
  CountTexts amount;  ///< with {number}
};

struct SpeedText {
  TypeSpeed speed;
  std::string_view word;  ///< as it stands in {speeds}
};

struct NounTexts {
  HealthType type;
  CountTexts noun;
};

/// What a row asks of the target: that it has no amount, any amount, one of a dimension or one in a unit.
struct AmountCondition {
  bool given = false;
  std::optional<TypeUnit::Dimension> dimension = std::nullopt;
  std::optional<TypeUnit> unit = std::nullopt;
};

/// A title. Rows are tried in order and the first one whose conditions hold is taken.
struct TitleRow {
  std::optional<TitleForm> form = std::nullopt;   ///< none: any
  std::optional<HealthType> type = std::nullopt;  ///< none: any
  AmountCondition amount = {};
  TypeSpeeds allOf = {};  ///< speeds all of which must be chosen
  TypeSpeeds oneOf = {};  ///< speeds of which at least one must be chosen; none: no matter

  std::string_view toDo;
  std::string_view toDoInParts = {};  ///< for several completions; none: what the language puts around `toDo`
  std::string_view toAvoid;
  /// For several completions of a title without an amount; none: what the language puts around `toDo`. An amount to
  /// avoid has no parts.
  std::string_view toAvoidInParts = {};
  CountTexts amountTexts = {};  ///< of a title: in place of those of the unit, wherever the amount of such a target is
                                ///< said: "3 alcoholic drinks"
};

struct NumberTexts {
  std::string_view decimalPoint;
  std::string_view groupSeparator;  ///< between thousands
  std::string_view minus;
  std::string_view timeOfDay;
  std::array<std::string_view, 2> halves;  ///< of the day, before and after noon
};

struct TitleTexts {
  std::span<const TitleRow> titles;   ///< a row without an amount for every form; last, one for any amount
  std::span<const TitleRow> targets;  ///< what stands apart from a task's own words; a row for everything
  std::string_view inParts;           ///< around a title with an amount that is split into several completions
  std::string_view times;             ///< around a title without an amount that wants several completions
  std::string_view timesToAvoid;      ///< the same around what is to be avoided, which fails at that number
  std::string_view twice;             ///< {times} for 2
  std::string_view manyTimes;         ///< {times} for any other number, with {count}
  std::string_view listSeparator;
  std::string_view listEnd;  ///< before the last word of a list
  NumberTexts numbers;
  std::span<const UnitTexts> units;  ///< all, in order of declaration
  std::span<const SpeedText> speeds;
  std::span<const NounTexts> nouns;
};

extern const TitleTexts englishTitles;

}  // namespace habitra
