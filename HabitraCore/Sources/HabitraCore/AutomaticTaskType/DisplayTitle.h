#pragma once

#include <HabitraCore/AutomaticTaskType/HealthType.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>

/// The human text of a target. The words stand in the table of a language (TitleTexts.h).
namespace habitra {

/// A title with its target built in: as it is kept, with the place of the amount open ("Drink {quantity} of water"),
/// and as it is read ("Drink 2 litres of water"). The two are the same where the title names no amount.
struct TaskDisplayTitle {
  std::string title;
  std::string titleFormatted;

  friend bool operator==(const TaskDisplayTitle&, const TaskDisplayTitle&) = default;
};

/// Where the text of a target belongs.
class HealthType::DisplayTitleType {
 public:
  enum class Kind : std::uint8_t { separate, integrated };

  /// Shown apart from the task's own title: "2 litres". Empty when there is nothing to say.
  [[nodiscard]] static DisplayTitleType separate(std::string text) { return DisplayTitleType(std::move(text)); }
  /// Built into the task's title.
  [[nodiscard]] static DisplayTitleType integrated(TaskDisplayTitle title) {
    return DisplayTitleType(std::move(title));
  }

  [[nodiscard]] Kind kind() const { return value_.index() == 0 ? Kind::separate : Kind::integrated; }
  /// The text as it is read, of either kind.
  [[nodiscard]] const std::string& text() const;
  /// The title; null for a text that stands apart.
  [[nodiscard]] const TaskDisplayTitle* title() const { return std::get_if<TaskDisplayTitle>(&value_); }

  friend bool operator==(const DisplayTitleType&, const DisplayTitleType&) = default;

 private:
  using Value = std::variant<std::string, TaskDisplayTitle>;
  explicit DisplayTitleType(Value value) : value_(std::move(value)) {}

  Value value_;
};

struct DisplayTitleOptions {
  /// The task's own words; none for ours. Where they hold "{quantity}" the amount is put there and the title is
  /// integrated; where they do not, the target is a text of its own, to be shown apart from them. A title of ours that
  /// was kept reads as it did, and words that come to nothing but blanks are none.
  std::optional<std::string> customText;
  bool isNegative = false;  ///< a task to avoid, which fails when the amount is reached: "Under 200 mg caffeine"
  bool lineBreaks = false;  ///< a line feed in place of a blank where one of our titles has a natural break
  /// How many completions the target is split into; below 1 counts as 1. Makes no difference to a time of day, to what
  /// is done one by one (drinks, stand hours) and to an amount to avoid.
  std::int64_t numPartialCompletions = 1;
};

/// An amount as it is read, with as many decimals as its unit shows and none that are 0: "10,000", "1.5", and "22:30"
/// for a time of day, of which whole days are left out. Rounded to the nearest, a half away from 0; amounts too great
/// for their digits to mean anything, from 10^15 on, have a power of ten: "1e+18". REQUIRES: finite.
[[nodiscard]] std::string formattedQuantityNumber(double quantity, TypeUnit unit);
/// The same with its unit: "10,000 steps", "1 litre", "5 km".
[[nodiscard]] std::string formattedQuantity(double quantity, TypeUnit unit);

}  // namespace habitra
