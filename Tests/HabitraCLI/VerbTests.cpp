#include "Program.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using nlohmann::json;

/// Each verb as a small story, told by the real program.
class VerbTests : public Program {
 protected:
  json runJSON(std::vector<std::string> words) {
    words.push_back("--json");
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    return json::parse(outcome.out);
  }

  void add(const std::string& title) { ASSERT_EQ(run({"add", title}).exitCode, 0); }
};

constexpr const char* history =
    "task_id,title,icon,entry_type,entry_date,entry_timestamp,quantity,page,notes\n"
    "946D21F1-5D7C-5E6A-A309-E01FAC24628A,\"Walk, 8,000 steps\",ic_walk,completed_manually,20240128,"
    "2024-01-28T20:00:00Z,1,2,\n"
    "946D21F1-5D7C-5E6A-A309-E01FAC24628A,\"Walk, 8,000 steps\",ic_walk,completed_manually,20240129,"
    "2024-01-29T20:00:00Z,1,2,\n"
    "946D21F1-5D7C-5E6A-A309-E01FAC24628A,\"Walk, 8,000 steps\",ic_walk,completed_manually,20240130,"
    "2024-01-30T20:00:00Z,1.5,2,windy\n"
    "3E9B0C52-7D0E-4B5C-9A53-2C1B5D3F6A77,\"Say \"\"hello\"\"\",,completed_manually,20240129,"
    "2024-01-29T07:00:00Z,,1,\n";

TEST_F(VerbTests, emptyStoreSaysHowToBeginAndStaysEmpty) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{}, {"today"}, {"list"}}) {
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 3) << outcome;
    EXPECT_NE(outcome.out.find("habitra add"), std::string::npos);
    EXPECT_NE(outcome.out.find("habitra import"), std::string::npos);
    EXPECT_EQ(outcome.err, "");
  }
  EXPECT_EQ(runJSON({"list"}), json::array());
  EXPECT_FALSE(std::filesystem::exists(home_));
}

TEST_F(VerbTests, healthImport) {
  const auto file = write("steps.csv",
                          "type,start,end,value,unit,source\n"
                          "stepCount,2024-01-31T08:00:00Z,2024-01-31T08:10:00Z,900,count,Watch\n"
                          "workout,2024-01-31T08:00:00Z,2024-01-31T08:10:00Z,walking 0.7 km,,Watch\n");
  EXPECT_EQ(run({"health", "import", file}), says("2 samples: 2 added\n"));
  EXPECT_EQ(runJSON({"health", "import", file}), (json{{"added", 0}, {"left", 2}}));
  const auto before = homeContents();
  input_ = "type,start,end,value,unit,source\nflossingEvent,2024-01-31T08:00:00Z,,,,Me\nflossingEvent,today,,,,Me\n";
  EXPECT_EQ(run({"health", "import", "-"}),
            (Outcome{1, "",
                     "habitra: standard input: line 3, start: \"today\" is not a moment such as "
                     "2024-01-31T08:15:00+01:00\n"}));
  EXPECT_EQ(homeContents(), before);
  EXPECT_FALSE(std::filesystem::exists(home_ / "Habitra-Local.sqlite"));
}

TEST_F(VerbTests, addAndDone) {
  EXPECT_EQ(run({"add", "Read", "ten", "pages"}), says("[ ] Read ten pages: added\n"));
  EXPECT_EQ(run({"add", "Run"}), says("[ ] Run: added\n"));
  EXPECT_EQ(run({"done", "read", "run"}),
            says("[x] Read ten pages: done, streak 1 (best 1)\n[x] Run: done, streak 1 (best 1)\n"));
  EXPECT_EQ(run({"done", "Read"}), says("[x] Read ten pages: was already done today, streak 1 (best 1)\n"));
  now_ = "2024-02-01T22:59:59Z";  // the last second of 1 February in Berlin
  EXPECT_EQ(run({"done", "Read"}), says("[x] Read ten pages: done, streak 2 (best 2)\n"));
  now_ = "2024-02-01T23:00:00Z";
  const json marked = runJSON({"done", "Read"});
  ASSERT_EQ(marked.size(), 1u);
  EXPECT_EQ(marked[0]["outcome"], "recorded");
  EXPECT_EQ(marked[0]["habit"]["streak"], (json{{"current", 3}, {"best", 3}}));
  EXPECT_EQ(marked[0]["habit"]["lastCompleted"], 20240202);
  EXPECT_EQ(runJSON({"done", "Read"})[0]["outcome"], "already");
}

TEST_F(VerbTests, doneOfSeveralIsAllOrNothing) {
  add("Read");
  const auto before = homeContents();
  EXPECT_EQ(run({"done", "Read", "Nothing like it"}).exitCode, 2);
  EXPECT_EQ(homeContents(), before);
}

TEST_F(VerbTests, skip) {
  add("Read");
  ASSERT_EQ(run({"done", "Read"}).exitCode, 0);
  now_ = "2024-02-01T10:00:00Z";
  EXPECT_EQ(run({"skip", "Read"}), says("[-] Read: skipped, streak 1 (best 1)\n"));
  EXPECT_EQ(run({"skip", "Read"}), says("[-] Read: was already skipped today, streak 1 (best 1)\n"));
  now_ = "2024-02-02T10:00:00Z";
  EXPECT_EQ(run({"done", "Read"}), says("[x] Read: done, streak 2 (best 2)\n"));
}

TEST_F(VerbTests, undo) {
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  ASSERT_EQ(run({"done", "Walk"}), says("[x] Walk, 8,000 steps: done, streak 4 (best 4)\n"));
  EXPECT_EQ(run({"undo", "Walk"}), says("[ ] Walk, 8,000 steps: open again, streak 3 (best 3)\n"));
  EXPECT_EQ(run({"undo", "--date", "-2", "Walk"}),
            says("[ ] Walk, 8,000 steps: taken back for 2024-01-29, streak 1 (best 1)\n"));
  const json habit = runJSON({"undo", "Walk", "--date", "yesterday"});
  EXPECT_EQ(habit["streak"], (json{{"current", 0}, {"best", 1}}));
  EXPECT_EQ(habit["lastCompleted"], 20240128);
}

TEST_F(VerbTests, doneAndSkipOnAnotherDay) {
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  ASSERT_EQ(run({"done", "Say"}), says("[x] Say \"hello\": done, streak 1 (best 1)\n"));
  EXPECT_EQ(run({"done", "Say", "--date", "2024-01-30"}),
            says("[x] Say \"hello\": done on 2024-01-30, streak 3 (best 3)\n"));
  EXPECT_EQ(run({"done", "Say", "Walk", "--date", "yesterday"}),
            says("[x] Say \"hello\": was already done on 2024-01-30, streak 3 (best 3)\n"
                 "[x] Walk, 8,000 steps: was already done on 2024-01-30, streak 3 (best 3)\n"));
  EXPECT_EQ(run({"skip", "Walk", "--date=-1"}),
            says("[-] Walk, 8,000 steps: skipped on 2024-01-30, streak 2 (best 2)\n"));
  EXPECT_EQ(run({"skip", "Walk", "--date", "20240130"}),
            says("[-] Walk, 8,000 steps: was already skipped on 2024-01-30, streak 2 (best 2)\n"));
  EXPECT_EQ(run({"done", "Walk", "--date", "today"}), says("[x] Walk, 8,000 steps: done, streak 3 (best 3)\n"));

  const json marked = runJSON({"done", "Walk", "--date", "2024-01-30"}).at(0);
  EXPECT_EQ(marked["outcome"], "recorded");
  EXPECT_EQ(marked["day"], 20240130);
  EXPECT_TRUE(marked["status"]["status"].contains("positiveComplete"));
  EXPECT_EQ(marked["habit"]["streak"]["current"], 4);
  EXPECT_FALSE(runJSON({"done", "Walk"}).at(0).contains("day"));
}

TEST_F(VerbTests, today) {
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  add("Stretch");
  ASSERT_EQ(run({"skip", "Stretch"}).exitCode, 0);
  const std::string expected =
      "Wed 2024-01-31: 0 of 3 done, 1 skipped\n"
      "\n"
      "Page 1\n"
      "[ ] Say \"hello\"        streak 0  best 1\n"
      "\n"
      "Page 2\n"
      "[ ] Walk, 8,000 steps  streak 3  best 3\n"
      "\n"
      "[-] Stretch            streak 0  best 0\n";
  EXPECT_EQ(run({"today"}), says(expected));
  EXPECT_EQ(run({}), says(expected));
  ASSERT_EQ(run({"done", "Walk"}).exitCode, 0);
  EXPECT_EQ(run({}), says("Wed 2024-01-31: 1 of 3 done, 1 skipped\n"
                          "\n"
                          "[ ] Say \"hello\"        streak 0  best 1\n"
                          "\n"
                          "[x] Walk, 8,000 steps  streak 4  best 4\n"
                          "\n"
                          "[-] Stretch            streak 0  best 0\n"));
  const json habits = runJSON({});
  ASSERT_EQ(habits.size(), 3u);
  EXPECT_EQ(habits[1]["title"], "Walk, 8,000 steps");
}

TEST_F(VerbTests, list) {
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  EXPECT_EQ(run({"list"}), says("Page 1\n"
                                "[ ] Say \"hello\"        streak 0  best 1  last done 2024-01-29\n"
                                "\n"
                                "Page 2\n"
                                "[ ] Walk, 8,000 steps  streak 3  best 3  last done 2024-01-30\n"));
  const json habits = runJSON({"list"});
  ASSERT_EQ(habits.size(), 2u);
  const json& walk = habits[1];
  EXPECT_EQ(walk["uniqueId"], "946D21F1-5D7C-5E6A-A309-E01FAC24628A");
  EXPECT_EQ(walk["page"], 2);
  EXPECT_EQ(walk["isNegative"], false);
  EXPECT_EQ(walk["due"], true);
  EXPECT_EQ(walk["frequency"]["dayMode"], 0);
  EXPECT_EQ(walk["period"], (json{{"type", "d"}, {"from", 20240131}, {"to", 20240131}}));
  EXPECT_TRUE(walk["status"]["status"].contains("positiveIncomplete"));
  EXPECT_EQ(walk["streak"], (json{{"current", 3}, {"best", 3}}));
  EXPECT_EQ(walk["lastCompleted"], 20240130);
  EXPECT_FALSE(walk.contains("lastMissed"));
  EXPECT_FALSE(walk.contains("lastSkipped"));
  EXPECT_EQ(habits[0]["lastMissed"], 20240130);
  // Looking at another day leaves no trace.
  const auto before = homeContents();
  now_ = "2024-02-05";
  EXPECT_EQ(runJSON({"list"})[1]["streak"], (json{{"current", 0}, {"best", 3}}));
  EXPECT_EQ(homeContents(), before);
}

TEST_F(VerbTests, process) {
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  EXPECT_EQ(run({"process"}), says("2 habits up to date\n"));
  now_ = "2024-02-02T10:00:00Z";
  EXPECT_EQ(runJSON({"process"}), (json{{"tasks", 2}, {"changed", 2}, {"filledIn", 4}, {"removed", 0}}));
  EXPECT_EQ(run({"process"}), says("2 habits up to date\n"));
  now_ = "2099-01-01T10:00:00Z";
  EXPECT_EQ(run({"process"}).exitCode, 0);
  EXPECT_EQ(bytesOf(home_ / "Habitra-Standard.json").find("pho.trimmed"), std::string::npos)
      << "history was trimmed by an invented time";
}

TEST_F(VerbTests, exportAndImportAgreeByteForByte) {
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  add("Without any entry");
  const Outcome first = run({"export", "-"});
  EXPECT_EQ(first.exitCode, 0) << first;
  EXPECT_EQ(first.err, "");
  home_ = folder_ / "second";
  input_ = first.out;
  ASSERT_EQ(run({"import", "-"}).exitCode, 0);
  EXPECT_EQ(run({"export", "-"}), first);
  const auto before = run({"list"});
  ASSERT_EQ(run({"import", "-"}).exitCode, 0) << "a second time";
  EXPECT_EQ(run({"export", "-"}), first);
  EXPECT_EQ(run({"list"}), before);

  const std::string file = folder_ / "out.csv";
  const Outcome written = run({"export", file});
  EXPECT_EQ(written.exitCode, 0) << written;
  EXPECT_TRUE(written.out.starts_with(file + ": ")) << written;
  EXPECT_EQ(bytesOf(file), first.out);
}

TEST_F(VerbTests, importStrategies) {
  const auto file = write("history.csv", history);
  EXPECT_EQ(runJSON({"import", file})["entries"]["added"], 4);
  const std::string walk = "946D21F1-5D7C-5E6A-A309-E01FAC24628A,Stroll,,skipped_manually,20240130,,,1,\n";
  const auto other =
      write("other.csv", "task_id,title,icon,entry_type,entry_date,entry_timestamp,quantity,page,notes\n" + walk +
                             "946D21F1-5D7C-5E6A-A309-E01FAC24628A,Stroll,,skipped_manually,20240201,,,1,\n");
  const auto before = run({"export", "-"});
  EXPECT_EQ(run({"import", other, "--strategy", "skip"}), says("1 habit: 1 already there\n2 entries: 2 passed over\n"));
  EXPECT_EQ(run({"export", "-"}), before);

  EXPECT_EQ(run({"import", "--strategy", "merge", other}),
            says("1 habit: 1 changed\n1 entry: 1 added\n"
                 "Walk, 8,000 steps: 1 entry; 1 entry lies after today and was left out\n"));
  const json copied = runJSON({"import", other, "--strategy", "new"});
  EXPECT_EQ(copied["tasks"][0]["outcome"], "added");
  EXPECT_NE(copied["tasks"][0]["uniqueId"], "946D21F1-5D7C-5E6A-A309-E01FAC24628A");
  EXPECT_EQ(copied["tasks"][0]["remarks"].size(), 1U);
  EXPECT_EQ(runJSON({"list"}).size(), 3U);

  const json replaced = runJSON({"import", file, "--strategy=overwrite"});
  EXPECT_EQ(replaced["entries"]["removed"], 2) << "the skip, and a miss that was filled in";
  EXPECT_EQ(runJSON({"list"})[2]["streak"], (json{{"current", 3}, {"best", 3}}));
}

TEST_F(VerbTests, helpAndVersionTouchNothing) {
  const Outcome general = runBare({"--help"});
  EXPECT_EQ(general.exitCode, 0);
  for (const std::string verb :
       {"today", "done", "skip", "undo", "add", "list", "import", "export", "process", "watch"}) {
    EXPECT_NE(general.out.find("\n  " + verb + " "), std::string::npos) << verb;
    const Outcome help = runBare({verb, "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.starts_with("Usage: habitra " + verb)) << help;
    EXPECT_NE(help.out.find("\n  habitra"), std::string::npos) << "an example of " << verb;
    EXPECT_EQ(runBare({"--help", verb}), help);
  }
  EXPECT_TRUE(runBare({"--version"}).out.starts_with("habitra "));
  EXPECT_FALSE(std::filesystem::exists(folder_ / ".local"));
}

TEST_F(VerbTests, homeIsFoundInThePersonsFolder) {
  EXPECT_EQ(runBare({"add", "Read"}), says("[ ] Read: added\n"));
  EXPECT_TRUE(std::filesystem::exists(folder_ / ".local/share/habitra"));
  EXPECT_EQ(runBare({"done", "Read", "--json", "--verbose"}).exitCode, 0);
}

TEST_F(VerbTests, everythingGoesOutAndComesBackTheSame) {
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  ASSERT_EQ(run({"skip", "Walk"}).exitCode, 0);
  const auto document = folder_ / "everything.habitra";
  EXPECT_EQ(run({"export", document}), says(document.string() + ": 6 entries and all else of 2 habits written\n"));
  const auto compressed = folder_ / "everything.habitra.zst";
  ASSERT_EQ(run({"export", compressed}).exitCode, 0);
  EXPECT_LT(std::filesystem::file_size(compressed), std::filesystem::file_size(document));
  const std::string csv = run({"export", "-"}).out;
  EXPECT_EQ(run({"export", folder_ / "all.json"}).exitCode, 2) << "nine columns would not be all";
  EXPECT_EQ(run({"export", "--page", "2", "-"}).out.find("hello"), std::string::npos);
  EXPECT_NE(run({"export", "--page", "1", "-"}).out.find("hello"), std::string::npos);
  EXPECT_EQ(run({"export", "--page", "9", "-"}), (Outcome{1, "", "habitra: there is no page 9\n"}));

  home_ = folder_ / "second";
  EXPECT_EQ(run({"import", compressed}), says("2 habits: 2 added\n6 entries: 6 added\n1 page: 1 added\n"));
  const auto again = folder_ / "again.habitra";
  ASSERT_EQ(run({"export", again}).exitCode, 0);
  EXPECT_EQ(bytesOf(again), bytesOf(document));
  EXPECT_EQ(run({"export", "-"}).out, csv);
  const auto before = homeContents();
  EXPECT_EQ(run({"import", document}), says("2 habits: 2 already there\n6 entries: 6 already there\n"
                                            "1 page: 1 already there\n"));
  EXPECT_EQ(homeContents(), before);
  input_ = bytesOf(compressed);
  EXPECT_EQ(run({"import", "-"}).exitCode, 0) << "what it is, is seen from its first bytes";
  EXPECT_EQ(run({"export", "--format", "habitra", "-"}).out, bytesOf(document));
}

TEST_F(VerbTests, restore) {
  EXPECT_EQ(run({"restore"}), says("No backups yet. One is made on each day on which something has changed.\n"));
  EXPECT_FALSE(std::filesystem::exists(home_));
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  const auto document = folder_ / "everything.habitra";
  ASSERT_EQ(run({"export", document}).exitCode, 0);
  add("Dance");
  ASSERT_EQ(run({"undo", "Walk", "--date", "yesterday"}).exitCode, 0);
  const Outcome restored = run({"restore", document});
  EXPECT_EQ(
      restored.out.find("everything.habitra: 2 habits with 5 entries restored\nWhat was stored before is kept as "), 0U)
      << restored;
  EXPECT_EQ(run({"export", "--format", "habitra", "-"}).out, bytesOf(document));
  EXPECT_EQ(run({"restore", "2024-01-30"}), (Outcome{1, "", "habitra: there is no backup of 2024-01-30\n"}));
  const auto before = homeContents();
  EXPECT_EQ(run({"restore", write("rows.csv", history)}).exitCode, 1) << "rows say too little to take the place of all";
  EXPECT_EQ(run({"restore", write("broken.habitra", bytesOf(document).substr(0, 300))}).exitCode, 1);
  EXPECT_EQ(homeContents(), before);
}

TEST_F(VerbTests, restoreOfADayWhenTheStoreIsDamaged) {
  ASSERT_EQ(run({"import", write("history.csv", history)}).exitCode, 0);
  const auto backup = folder_ / "backup.habitra.zst";
  ASSERT_EQ(run({"export", backup}).exitCode, 0);
  const auto store = home_ / "Habitra-Local.sqlite";
  EXPECT_EQ(run({"export", "--format", "csv", store}).exitCode, 1) << "an export never takes the place of the store";
  std::filesystem::create_directories(home_ / "Backups");
  std::filesystem::copy_file(backup, home_ / "Backups" / "2024-01-30.habitra.zst");
  std::filesystem::remove(home_ / "Habitra-Local.sqlite-wal");
  std::ofstream(store) << "no store";
  ASSERT_EQ(run({"list"}).exitCode, 1);
  EXPECT_EQ(run({"restore", "2024-01-30"}).exitCode, 0);
  EXPECT_EQ(runJSON({"list"}).size(), 2U);
}

TEST_F(VerbTests, sample) {
  const auto file = folder_ / "habitra-sample.csv";
  EXPECT_EQ(run({"sample", folder_.path()}).exitCode, 0);
  const Outcome imported = run({"import", file});
  EXPECT_EQ(imported.out.find("5 habits: 5 added\n"), 0U) << imported;
  EXPECT_EQ(std::count(imported.out.begin(), imported.out.end(), '\n'), 3) << imported;
  EXPECT_EQ(run({"export", "-"}).exitCode, 0);
  EXPECT_EQ(run({"sample", folder_ / "nowhere"}),
            (Outcome{1, "", "habitra: " + (folder_ / "nowhere").string() + " is not a folder\n"}));
  std::filesystem::remove(file);
  std::filesystem::create_symlink(write("other.csv", "mine"), file);
  EXPECT_EQ(run({"sample", folder_.path()}).exitCode, 0);
  EXPECT_EQ(bytesOf(folder_ / "other.csv"), "mine") << "the name is ours, and not what somebody made of it";
}

TEST_F(VerbTests, importOfAnotherTrackersHistory) {
  std::filesystem::create_directory(folder_ / "harsh");
  std::ofstream(folder_ / "harsh" / "habits") << "# mine\n! Mornings\nGymmed: 1\nCalled Mum: 7\n";
  std::ofstream(folder_ / "harsh" / "log")
      << "2024-01-29 : Gymmed : y : legs : \n2024-01-30 : Gymmed : s :  : \n2024-01-30 : Called Mum : n :  : \n";
  const Outcome imported = run({"import", folder_ / "harsh"});
  EXPECT_EQ(imported.exitCode, 0) << imported;
  EXPECT_NE(imported.out.find("Read as harsh"), std::string::npos) << imported;
  EXPECT_NE(imported.out.find("among them 1 skip"), std::string::npos) << imported;
  EXPECT_EQ(runJSON({"list"}).size(), 2U);
  const auto before = run({"export", "--format", "habitra", "-"}).out;
  EXPECT_EQ(run({"import", folder_ / "harsh"}).exitCode, 0);
  EXPECT_EQ(run({"export", "--format", "habitra", "-"}).out, before) << "the second time brings nothing";
}

}  // namespace
