#include <HabitraCLI/Answers.h>

#include <nlohmann/json.hpp>
#include <utility>

namespace habitra {
namespace {

using nlohmann::json;

std::string text(const json& value) { return value.dump(2, ' ', false, json::error_handler_t::replace) + "\n"; }

json figures(const ProcessReport& report) {
  return {
      {"tasks", report.tasks}, {"changed", report.changed}, {"filledIn", report.filledIn}, {"removed", report.removed}};
}

json figures(const ImportReport::Entries& entries) {
  return {{"added", entries.added}, {"changed", entries.changed},       {"removed", entries.removed},
          {"left", entries.left},   {"passedOver", entries.passedOver}, {"afterToday", entries.afterToday}};
}

json figures(const ImportReport::Rows& rows) {
  return {{"added", rows.added},
          {"changed", rows.changed},
          {"removed", rows.removed},
          {"left", rows.left},
          {"passedOver", rows.passedOver}};
}

std::string_view name(ImportReport::Outcome outcome) {
  switch (outcome) {
    case ImportReport::Outcome::added: return "added";
    case ImportReport::Outcome::changed: return "changed";
    case ImportReport::Outcome::left: return "left";
    case ImportReport::Outcome::leftOut: return "leftOut";
  }
  return "unknown";
}

}  // namespace

std::string asJSON(const HabitList& answer) { return text(answer.habits); }

std::string asJSON(const TodayList& answer) {
  json habits = json::array();
  for (const auto* group : {&answer.open, &answer.done, &answer.others}) {
    for (const HabitSummary& habit : *group) habits.push_back(habit);
  }
  return text(habits);
}

std::string asJSON(const AddedHabit& answer) { return text(answer.habit); }

std::string asJSON(const MarkedHabits& answer) {
  json habits = json::array();
  for (const Marked& marked : answer.habits) {
    const bool already = marked.outcome == Marked::Outcome::already;
    json written{{"outcome", already ? "already" : "recorded"}, {"habit", marked.habit}};
    if (marked.pastDay) {
      written["day"] = marked.pastDay->day;
      if (marked.pastDay->status) written["status"] = *marked.pastDay->status;
    }
    habits.push_back(std::move(written));
  }
  return text(habits);
}

std::string asJSON(const UndoneHabit& answer) { return text(answer.habit); }

std::string asJSON(const ProcessReport& answer) { return text(figures(answer)); }

std::string asJSON(const ImportedHistory& answer) {
  const ImportReport& report = answer.outcome.report;
  json tasks = json::array();
  for (const ImportReport::Task& task : report.tasks) {
    json written{{"title", task.title},
                 {"outcome", name(task.outcome)},
                 {"entries", figures(task.entries)},
                 {"notes", figures(task.notes)},
                 {"parts", figures(task.parts)}};
    if (!task.uniqueId.empty()) written["uniqueId"] = task.uniqueId;
    if (!task.remarks.empty()) written["remarks"] = task.remarks;
    tasks.push_back(std::move(written));
  }
  json answered{{"tasks", tasks},
                {"entries", figures(report.entries())},
                {"notes", figures(report.notes())},
                {"parts", figures(report.parts())},
                {"pages", figures(report.pages)},
                {"categories", figures(report.categories)},
                {"settings", figures(report.settings)}};
  if (!report.remarks.empty()) answered["remarks"] = report.remarks;
  if (answer.outcome.processed) answered["processed"] = figures(*answer.outcome.processed);
  return text(answered);
}

std::string asJSON(const ImportedSamples& answer) {
  return text({{"added", answer.outcome.added}, {"left", answer.outcome.left}});
}

std::string asJSON(const ExportedHistory& answer) {
  return text({{"tasks", answer.outcome.tasks}, {"rows", answer.outcome.rows}});
}

}  // namespace habitra
