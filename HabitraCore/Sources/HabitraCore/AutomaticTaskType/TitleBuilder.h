#pragma once

#include <HabitraCore/AutomaticTaskType/DisplayTitle.h>
#include <HabitraCore/AutomaticTaskType/TitleTexts.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Titles of targets from the table of a language. For sources of this module.
namespace habitra {

/// A target as a title sees it.
struct TitleTarget {
  TitleForm form;
  std::optional<HealthType> healthType;  ///< none of a timer and of screen time
  std::optional<double> quantity;        ///< no amount unless quantity and unit are both there. REQUIRES: finite
  std::optional<TypeUnit> unit;
  TypeSpeeds speeds;
};

/// The title of a target. A task to avoid whose amount is one counted thing, or nothing, fails at any at all and has
/// the title of one without an amount ("No alcohol"); an amount of which a form knows nothing stands behind the title;
/// a duration of less than one of its unit is said in a finer one ("30 minutes", not "0.5 hours").
[[nodiscard]] HealthType::DisplayTitleType displayTitle(const TitleTexts& texts, const TitleTarget& target,
                                                        const DisplayTitleOptions& options);

/// The same in English.
[[nodiscard]] HealthType::DisplayTitleType displayTitle(TitleForm form, std::optional<HealthType> healthType,
                                                        std::optional<double> quantity, std::optional<TypeUnit> unit,
                                                        TypeSpeeds speeds, const DisplayTitleOptions& options);

/// Amounts in a language; see formattedQuantityNumber and formattedQuantity.
[[nodiscard]] std::string formattedQuantityNumber(const TitleTexts& texts, double quantity, TypeUnit unit);
[[nodiscard]] std::string formattedQuantity(const TitleTexts& texts, double quantity, TypeUnit unit);
/// With other words than those of the unit.
[[nodiscard]] std::string formattedQuantity(const TitleTexts& texts, double quantity, TypeUnit unit,
                                            const CountTexts& amountTexts);
/// A number of things.
[[nodiscard]] std::string formattedCount(const TitleTexts& texts, std::int64_t count);

/// A template with its places filled: {name} is replaced by the value of that name, any other stays as it is.
struct TitlePlace {
  std::string_view name;
  std::string value;
};
[[nodiscard]] std::string filled(std::string_view text, std::span<const TitlePlace> places);

}  // namespace habitra
