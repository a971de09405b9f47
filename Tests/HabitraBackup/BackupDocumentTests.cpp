#include <gtest/gtest.h>
#include <HabitraBackup/Document/HabitraJSONEncoder.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Files/CompressionError.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <Support/TemporaryFolder.h>
#include <algorithm>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BackupDocumentGenerators.h"

namespace habitra {
namespace {

namespace fs = std::filesystem;

LoadedBackup load(std::string_view text) { return HabitraBackup::loadJson(std::as_bytes(std::span(text))); }

std::string refusal(std::string_view text) {
  try {
    static_cast<void>(load(text));
  } catch (const HabitraJSONError& error) {
    return error.what();
  } catch (const CompressionError& error) {
    return error.what();
  }
  return "accepted";
}

std::string withTask(const std::string& members) { return R"({"version":1,"tasks":[{)" + members + "}]}"; }
std::string withEntry(const std::string& members) { return withTask(R"("taskEntry":[{)" + members + "}]"); }

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

std::string contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(BackupDocumentTests, AnyDocumentIsReadBackAndWrittenTheSameAgain) {
  const bool holds = rc::check("document, text, document", [] {
    const HabitraJSONBackup document = anyDocument();
    const std::string text = document.jsonString();
    const LoadedBackup loaded = load(text);
    RC_ASSERT(loaded.document == document);
    RC_ASSERT(loaded.remarks == HabitraJSONRemarks{});
    RC_ASSERT(loaded.document.jsonString() == text);
  });
  EXPECT_TRUE(holds);
}

TEST(BackupDocumentTests, TheText) {
  HabitraJSONBackup document;
  document.timestamp = qz::Moment(std::chrono::microseconds(1'706'688'900'250'000));
  document.settings = {SettingEntity{.settingKey = "startOfDay", .intValue = 0}};
  auto& task = document.tasks.emplace_back();
  task.title = "a\"\\\n\x01\xff\xc3\xa9";
  task.record.emplace().task.typeTarget = 0.1;
  task.record->task.typeExtra = Bytes{0, 255};
  task.record->task.snoozeDate = 20230230;
  task.record->task.last7Pct = std::numeric_limits<double>::infinity();
  task.record->counters = {TaskCounterEntity{.quantity = 3, .uniqueId = "not one"}};
  auto& log = task.log.emplace();
  log.emplace_back().entryDate = qz::YYYYMMDD(2024, 1, 31);
  log.back().progress = 1;
  log.emplace_back().entryDate = qz::YYYYMMDD(2023, 2, 30);
  const std::string text =
      "{\n"
      "  \"version\":1,\n"
      "  \"timestamp\":\"2024-01-31T08:15:00.25Z\",\n"
      "  \"backupType\":\"manual\",\n"
      "  \"settings\":[\n"
      "    {\"settingKey\":\"startOfDay\",\"intValue\":0}\n"
      "  ],\n"
      "  \"tasks\":[\n"
      "    {\n"
      "      \"title\":\"a\\\"\\\\\\n\\u0001\xEF\xBF\xBD\xc3\xa9\",\n"
      "      \"daysMode\":0,\n"
      "      \"typeTarget\":0.1,\n"
      "      \"typeExtra\":\"AP8=\",\n"
      "      \"taskCounter\":[\n"
      "        {\"quantity\":3}\n"
      "      ],\n"
      "      \"taskEntry\":[\n"
      "        {\"entryType\":0,\"entryDate\":20240131,\"progress\":1}\n"
      "      ]\n"
      "    }\n"
      "  ]\n"
      "}\n";
  EXPECT_EQ(document.jsonString(), text) << "what cannot be read back is left out";
  EXPECT_EQ(load(text).document.jsonString(), text);
  EXPECT_EQ(load("\xEF\xBB\xBF" + text).document.jsonString(), text) << "with a byte-order mark";
}

TEST(BackupDocumentTests, WhatIsRefused) {
  const std::string entry = R"("entryType":1,"entryDate":20240131)";
  const std::string longText(17U << 20U, 'x');
  const std::vector<std::pair<std::string, std::string>> cases{
      // no JSON
      {"", "line 1, column 0: this is not JSON: unexpected end of input; expected '[', '{', or a literal"},
      {"{\n \"version\":1,}", "line 2, column 14: this is not JSON: unexpected '}'; expected string literal"},
      {"{} {}", "line 1, column 4: this is not JSON: unexpected '{'; expected end of input"},
      {withTask(R"("title":"a)"),
       "line 1, column 36: this is not JSON: invalid string: missing closing quote; last "
       "read: '\"a}]}'"},
      {withTask("\"title\":\"\xff\""),
       "line 1, column 33: this is not JSON: invalid string: ill-formed UTF-8 byte; "
       "last read: '\"\\xFF'"},
      {withTask(R"("typeTarget":1e999)"), "line 1, column 42: this is not JSON: number overflow parsing '1e999'"},
      {std::string("{\n\0}", 4), "line 2, column 1: byte 0x00 is not text (UTF-8 expected)"},
      {withTask("\"title\":\"" + longText + "\""), "line 1, column 16777249: a text or number is longer than 16 MiB"},
      // not the document
      {"[]", "a list is not a backup document, which is an object"},
      {"{}", "version: missing; every backup document has it"},
      {R"({"version":1})", "tasks: missing; every backup document has it"},
      {R"({"version":2,"tasks":7})", "version: made by a newer Habitra: its version is 2, this program reads up to 1"},
      {R"({"version":1,"tasks":{}})", "tasks: an object is not a list"},
      {R"({"version":1,"tasks":[3]})", "tasks[0]: 3 is not a task, which is an object"},
      {R"({"version":1,"backupType":"hourly","tasks":[]})",
       "backupType: \"hourly\" is not why a backup is made (manual, migrator, scheduled or automated)"},
      {R"({"version":1,"tasks":[],"tasks":[]})", "tasks: this key stands in its object twice"},
      {R"({"version":1,"tasks":[],"x":)" + nested(64) + "}", "x" +
                                                                 [] {
                                                                   std::string path;
                                                                   for (int i = 0; i < 63; ++i) path += "[0]";
                                                                   return path;
                                                                 }() +
                                                                 ": deeper than 64 levels"},
      // values
      {withTask(R"("title":null)"), "tasks[0].title: null is not a text"},
      {withTask(R"("title":["a"])"), "tasks[0].title: a list is not a text"},
      {withTask(R"("title":"a\u0000b")"), "tasks[0].title: \"a\\x00b\" holds a NUL, which is no text"},
      {withTask(R"("isNegative":1)"), "tasks[0].isNegative: 1 is not true or false"},
      {withTask(R"("daysMode":32768)"), "tasks[0].daysMode: 32768 is not a whole number from -32768 to 32767"},
      {withTask(R"("daysOfMonth":9223372036854775808)"),
       "tasks[0].daysOfMonth: 9223372036854775808 is not a whole number from -9223372036854775808 to "
       "9223372036854775807"},
      {withTask(R"("daysMode":1.5)"), "tasks[0].daysMode: 1.5 is not a whole number from -32768 to 32767"},
      {withTask(R"("pageNumber":0)"), "tasks[0].pageNumber: 0 is not a whole number from 1 to 32768"},
      {withTask(R"("typeExtra":"AP8")"), "tasks[0].typeExtra: \"AP8\" is not bytes in Base64"},
      {withTask(R"("created":"2024-01-31")"),
       "tasks[0].created: \"2024-01-31\" is not a moment like \"2024-01-31T08:15:00Z\""},
      {withTask(R"("taskCategories":["work"])"), "tasks[0].taskCategories[0]: \"work\" is not an identifier (a UUID)"},
      {withTask(R"("pauses":[{"to":20240131}])"), "tasks[0].pauses[0].from: missing; every pause has it"},
      {withTask(R"("taskNote":[{"noteDate":20230230}])"),
       "tasks[0].taskNote[0].noteDate: 20230230 is not a day of the calendar like 20240131"},
      {withTask(R"("taskNotificationSettings":[])"), "tasks[0].taskNotificationSettings: a list is not an object"},
      // entries
      {withEntry(""), "tasks[0].taskEntry[0].entryType: missing; every entry has it"},
      {withEntry(entry + "},{" + R"("entryType":99,"entryDate":20240131)"),
       "tasks[0].taskEntry[1].entryType: 99 is not the number of an entry type"},
      {withEntry(entry + R"(,"entryDate":20240131)"),
       "tasks[0].taskEntry[0].entryDate: this key stands in its object twice"},
      {withEntry(entry + R"(,"entryPeriodFrom":20240131)"),
       "tasks[0].taskEntry[0]: a period has entryPeriodFrom, entryPeriodTo and entryPeriodType, or none"},
      {withEntry(entry + R"(,"entryPeriodFrom":20240131,"entryPeriodTo":20240130,"entryPeriodType":"d")"),
       "tasks[0].taskEntry[0].entryPeriodTo: the period ends before it begins"},
      {R"({"version":1,"tasks":[{"pauses":[{"from":20240131,"to":20240101}]}]})",
       "tasks[0].pauses[0].to: the pause ends before it begins"},
      {withEntry(entry + R"(,"progress":"all of it, and a good deal more than anybody asked for")"),
       "tasks[0].taskEntry[0].progress: \"all of it, and a good deal more than any...\" is not a number"},
  };
  for (const auto& [text, message] : cases) EXPECT_EQ(refusal(text), message) << text.substr(0, 100);
}

TEST(BackupDocumentTests, UnknownKeysAreNamedAndCounted) {
  const auto loaded = load(R"({"version":1,"mood":[{"a":1},{"a":1}],"tasks":[
    {"title":"A","task":5,"colour":{"deep":[1]},"taskEntry":[{"entryType":1,"entryDate":20240131,"mood":3},
                                                              {"entryType":1,"entryDate":20240131,"mood":4}]},
    {"title":"B","colours":[1,2]}]})");
  EXPECT_EQ(loaded.remarks.unknownKeys, (std::map<std::string, std::size_t>{{"mood", 1},
                                                                            {"tasks[].colour", 1},
                                                                            {"tasks[].colours", 1},
                                                                            {"tasks[].task", 1},
                                                                            {"tasks[].taskEntry[].mood", 2}}));
  ASSERT_EQ(loaded.document.tasks.size(), 2U);
  EXPECT_EQ(loaded.document.tasks[0].log->size(), 2U);
  EXPECT_EQ(loaded.document.tasks[1].title, "B");
}

TEST(BackupDocumentTests, ATaskThatDoesNotSayHowOftenIsOneOfEveryDay) {
  const auto loaded = load(R"({"version":1,"tasks":[{"title":"A","pauses":[{"from":20240101}]}]})");
  const auto& record = loaded.document.tasks.at(0).record.value();
  EXPECT_EQ(frequencyOf(record.task), TaskFrequency::everyDay());
  EXPECT_TRUE(isActive(record.task));
  EXPECT_EQ(record.pauses.size(), 1U);
}

TEST(BackupDocumentTests, ARunOfBlanksIsNoMoreThanOne) {
  const std::string blanks(300'000, ' ');
  const std::string text = "{\"version\":1," + blanks + "\n\t\"tasks\":[" + blanks + "]," + blanks + "\"mood\": 7}";
  EXPECT_EQ(load(text).remarks.unknownKeys.size(), 1U);
  EXPECT_EQ(load("{\"version\":1,\"tasks\":[{\"title\":\"a  b\"}]}").document.tasks.at(0).title, "a  b");
}

TEST(BackupDocumentTests, BothDirectionsAreStreams) {
  HabitraJSONBackup document;
  for (const char* title : {"A", "B"}) {
    auto& task = document.tasks.emplace_back();
    task.title = title;
    for (auto& entry : task.log.emplace(20'000)) entry.entryDate = qz::YYYYMMDD(2024, 1, 31);
  }
  std::string text;
  std::size_t longestPiece = 0;
  encode(document, [&](std::string_view bytes) {
    text += bytes;
    longestPiece = std::max(longestPiece, bytes.size());
  });
  EXPECT_GT(text.size(), 1'000'000U);
  EXPECT_LT(longestPiece, 100'000U);

  std::string_view rest = text;
  std::vector<std::size_t> restAtTask;
  const ByteSource source = [&rest](std::span<char> chunk) {
    const std::size_t length = rest.copy(chunk.data(), chunk.size());
    rest.remove_prefix(length);
    return length;
  };
  const auto loaded = HabitraJSONDecoder().decode(source, [&](HabitraJSONBackupTask&& task) {
    EXPECT_EQ(task.log->size(), 20'000U);
    restAtTask.push_back(rest.size());
  });
  EXPECT_TRUE(loaded.document.tasks.empty());
  ASSERT_EQ(restAtTask.size(), 2U);
  EXPECT_GT(restAtTask[0], text.size() / 3) << "handed over before the next one is read";
}

TEST(BackupDocumentTests, CompressedFiles) {
  const TemporaryFolder folder;
  HabitraJSONBackup document;
  for (int i = 0; i < 5'000; ++i) document.tasks.emplace_back().title = "Task " + std::to_string(i * 7919 % 5'000);
  document.write(folder / "a.habitra.zst", HabitraBackupFormat::json);
  document.write(folder / "a.habitra", HabitraBackupFormat::json);
  const std::string plain = contents(folder / "a.habitra");
  const std::string compressed = contents(folder / "a.habitra.zst");
  EXPECT_EQ(plain, document.jsonString());
  EXPECT_LT(compressed.size(), plain.size() / 2);

  fs::rename(folder / "a.habitra.zst", folder / "b.habitra");
  EXPECT_EQ(HabitraBackup::loadJson(folder / "b.habitra").document, document) << "the name does not matter";
  EXPECT_EQ(HabitraBackup::loadJson(folder / "a.habitra").document, document);
  EXPECT_EQ(refusal(compressed + compressed), refusal(plain + plain)) << "frames follow each other";

  EXPECT_EQ(refusal(compressed.substr(0, compressed.size() / 2)),
            "the compressed data is cut: it ends before its frame does");
  std::string damaged = compressed;
  damaged.back() = static_cast<char>(damaged.back() ^ 1);
  EXPECT_EQ(refusal(damaged), "the compressed data is damaged: Restored data doesn't match checksum");
  EXPECT_EQ(refusal(compressed + "x"), "the compressed data is damaged: Unknown frame descriptor");
  std::ofstream(folder / "c.habitra", std::ios::binary) << damaged;
  EXPECT_THROW(static_cast<void>(HabitraBackup::loadJson(folder / "c.habitra")), CompressionError);
}

TEST(BackupDocumentTests, ATextThatNobodyWouldReadIsNotWritten) {
  const TemporaryFolder folder;
  HabitraJSONBackup document;
  document.tasks.emplace_back().title = std::string(17U << 20U, 'x');
  EXPECT_THROW(document.write(folder / "a.habitra", HabitraBackupFormat::json), HabitraJSONError);
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

}  // namespace
}  // namespace habitra
