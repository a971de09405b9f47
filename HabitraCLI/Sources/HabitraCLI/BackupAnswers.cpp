#include <HabitraCLI/Answers.h>
#include <HabitraCLI/DisplayText.h>
#include <QZDateTime/YYYYMMDD.h>

#include <fmt/format.h>
#include <algorithm>
#include <cctype>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

namespace habitra {
namespace {

using nlohmann::json;

/// As a shell takes it for one word.
std::string shellWord(const std::string& text) {
  const auto isPlain = [](unsigned char c) { return std::isalnum(c) != 0 || c > 0x7F || std::strchr("/._-+,", c); };
  if (std::ranges::all_of(text, isPlain)) return text;
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

/// "312 kB", rounded up: a file of one byte is not empty.
std::string kilobytes(std::uintmax_t size) { return fmt::format("{} kB", (size + 999) / 1000); }

std::string text(const json& value) { return value.dump(2, ' ', false, json::error_handler_t::replace) + "\n"; }

}  // namespace

std::string asText(const BackupList& answer, const Terminal&) {
  if (answer.backups.empty()) return "No backups yet. One is made on each day on which something has changed.\n";
  std::string text;
  for (const BackupSummary& backup : answer.backups)
    text += fmt::format("{}  {:>9}\n", backup.day.debugDescription(), kilobytes(backup.size));
  return text + fmt::format("Go back to one:   habitra restore {}\n", answer.backups.front().day.debugDescription());
}

std::string asText(const RestoredHistory& answer, const Terminal&) {
  const RestoreOutcome& outcome = answer.outcome;
  std::string text = fmt::format("{}: {} with {} restored\n", displayable(outcome.file.filename().string()),
                                 counted(outcome.tasks, "habit"), counted(outcome.entries, "entry", "entries"));
  for (const std::string& remark : outcome.remarks) text += displayable(remark) + "\n";
  if (!outcome.processed) text += broughtUpToDateLater;
  if (outcome.kept) text += fmt::format("What was stored before is kept as {}\n", displayable(outcome.kept->string()));
  return text;
}

std::string asText(const WrittenSample& answer, const Terminal&) {
  return fmt::format("{}: written\nTry it:   habitra --home try-out import {}\n", displayable(answer.file),
                     displayable(shellWord(answer.file)));
}

std::string asJSON(const BackupList& answer) {
  json backups = json::array();
  for (const BackupSummary& backup : answer.backups)
    backups.push_back({{"day", backup.day}, {"file", backup.file.string()}, {"size", backup.size}});
  return text(backups);
}

std::string asJSON(const RestoredHistory& answer) {
  const RestoreOutcome& outcome = answer.outcome;
  json restored{{"file", outcome.file.string()},
                {"tasks", outcome.tasks},
                {"entries", outcome.entries},
                {"remarks", outcome.remarks}};
  if (outcome.kept) restored["kept"] = outcome.kept->string();
  return text(restored);
}

std::string asJSON(const WrittenSample& answer) { return text({{"file", answer.file}}); }

}  // namespace habitra
