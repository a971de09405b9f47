#pragma once

#include <HabitraApp/Application.h>
#include <HabitraCLI/Terminal.h>

#include <optional>
#include <string>
#include <vector>

/// What commands say. Each answer exists once as text for a person and once as JSON for a script; both end with a line
/// feed. JSON is indented by two blanks; an absent value is an absent key.
namespace habitra {

struct HabitList {
  std::vector<HabitSummary> habits;
};

/// The habits in the order in which a person looks for them: what is still to do today, what is well, everything else.
struct TodayList {
  qz::YYYYMMDD day;
  std::vector<HabitSummary> open;
  std::vector<HabitSummary> done;    ///< and those to avoid that are clean so far
  std::vector<HabitSummary> others;  ///< skipped, missed, not due

  /// Keeps the order of `habits` within each group.
  [[nodiscard]] static TodayList of(qz::YYYYMMDD day, std::vector<HabitSummary> habits);
};

struct AddedHabit {
  HabitSummary habit;
};

struct MarkedHabits {
  std::vector<Marked> habits;
};

struct UndoneHabit {
  HabitSummary habit;
  std::optional<qz::YYYYMMDD> day;  ///< none: its today
};

struct ImportedHistory {
  ImportOutcome outcome;
};

struct ImportedSamples {
  HealthImportOutcome outcome;
};

struct ExportedHistory {
  ExportOutcome outcome;
  std::string file;
  HabitraBackupFormat format = HabitraBackupFormat::csv;
};

struct BackupList {
  std::vector<BackupSummary> backups;
};

struct RestoredHistory {
  RestoreOutcome outcome;
};

/// What a person is told when what was stored could not be followed by a pass.
inline constexpr std::string_view broughtUpToDateLater =
    "The habits could not be brought up to date now (habitra.log says why); the next command tries again.\n";

struct WrittenSample {
  std::string file;
};

[[nodiscard]] std::string asText(const HabitList& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const TodayList& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const AddedHabit& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const MarkedHabits& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const UndoneHabit& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const ProcessReport& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const ImportedHistory& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const ImportedSamples& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const ExportedHistory& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const BackupList& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const RestoredHistory& answer, const Terminal& terminal);
[[nodiscard]] std::string asText(const WrittenSample& answer, const Terminal& terminal);

[[nodiscard]] std::string asJSON(const HabitList& answer);
[[nodiscard]] std::string asJSON(const TodayList& answer);
[[nodiscard]] std::string asJSON(const AddedHabit& answer);
[[nodiscard]] std::string asJSON(const MarkedHabits& answer);
[[nodiscard]] std::string asJSON(const UndoneHabit& answer);
[[nodiscard]] std::string asJSON(const ProcessReport& answer);
[[nodiscard]] std::string asJSON(const ImportedHistory& answer);
[[nodiscard]] std::string asJSON(const ImportedSamples& answer);
[[nodiscard]] std::string asJSON(const ExportedHistory& answer);
[[nodiscard]] std::string asJSON(const BackupList& answer);
[[nodiscard]] std::string asJSON(const RestoredHistory& answer);
[[nodiscard]] std::string asJSON(const WrittenSample& answer);

}  // namespace habitra
