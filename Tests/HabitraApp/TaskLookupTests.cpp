#include <gtest/gtest.h>
#include <HabitraApp/TaskLookup.h>

#include <string>
#include <vector>

namespace {

using habitra::didYouMean;
using habitra::lookUpTask;
using habitra::nearestMatches;
using habitra::TaskName;
using habitra::TaskNameError;
using Words = std::vector<std::string>;

constexpr const char* firstId = "01234567-89AB-7CDE-8F01-23456789ABCD";
constexpr const char* secondId = "11234567-89AB-7CDE-8F01-23456789ABCD";

std::vector<TaskName> tasksCalled(const Words& titles) {
  std::vector<TaskName> tasks;
  for (const std::string& title : titles) {
    std::string id = firstId;
    id[0] = static_cast<char>('0' + tasks.size());
    tasks.push_back({qz::UniqueID::fromText(id).value(), title});
  }
  return tasks;
}

std::string refusal(const std::vector<TaskName>& tasks, const std::string& name) {
  try {
    return "found " + tasks[lookUpTask(tasks, name)].title;
  } catch (const TaskNameError& error) {
    return error.what();
  }
}

TEST(TaskLookupTests, theFirstWayThatFindsAnythingDecides) {
  const auto tasks = tasksCalled({"Read", "read", "Read the news", "Öl wechseln", "Straße", secondId});
  EXPECT_EQ(lookUpTask(tasks, "11234567-89ab-7cde-8f01-23456789abcd"), 1u) << "an identifier before a title";
  EXPECT_EQ(lookUpTask(tasks, "Read"), 0u) << "the whole title before the same in another case";
  EXPECT_EQ(lookUpTask(tasks, "read"), 1u);
  EXPECT_EQ(lookUpTask(tasks, "read THE news"), 2u);
  EXPECT_EQ(lookUpTask(tasks, "Read t"), 2u) << "a start that is unique";
  EXPECT_EQ(lookUpTask(tasks, "öL WECHSELN"), 3u);
  EXPECT_EQ(lookUpTask(tasks, "öl"), 3u);
  EXPECT_EQ(lookUpTask(tasks, "STRAß"), 4u);
}

TEST(TaskLookupTests, whatIsNotOneHabitIsRefusedWithTheCandidates) {
  const auto tasks = tasksCalled({"Read", "reAd", "Run"});
  EXPECT_EQ(refusal(tasks, "READ"),
            std::string("'READ' can mean 2 habits: 'Read' (") + firstId + "), 'reAd' (" + secondId + ")");
  EXPECT_TRUE(refusal(tasks, "r").starts_with("'r' can mean 3 habits: "));
  EXPECT_EQ(refusal(tasks, ""), "no habit is called ''");
  EXPECT_EQ(refusal(tasks, "Rum"), "no habit is called 'Rum', did you mean 'Run'?");
  EXPECT_EQ(refusal(tasks, "Meditate"), "no habit is called 'Meditate'");
  EXPECT_EQ(refusal({}, "Read"), "no habit is called 'Read'");
  EXPECT_TRUE(refusal(tasks, "91234567-89AB-7CDE-8F01-23456789ABCD").starts_with("no habit is called '91234567"));
  EXPECT_EQ(refusal(tasksCalled({"Re\xFF"}), "re\xFF"), "found Re\xFF")
      << "bytes that are no text stand for themselves";
}

TEST(TaskLookupTests, nearestMatchesAreCloseOrContainTheWord) {
  const Words words{"list", "lists", "last", "undo", "export", "List"};
  EXPECT_EQ(nearestMatches("lsit", words), (Words{"list", "List"})) << "neighbours that are swapped are one slip";
  EXPECT_EQ(nearestMatches("list", words), (Words{"list", "List", "lists"})) << "the best first, three at most";
  EXPECT_EQ(nearestMatches("list", words, 1), Words{"list"});
  EXPECT_EQ(nearestMatches("port", words), Words{"export"});
  EXPECT_EQ(nearestMatches("xyzzy", words), Words{});
  EXPECT_EQ(nearestMatches("ÖL", Words{"Öl", "Al"}), (Words{"Öl", "Al"})) << "one letter, not two bytes";
  EXPECT_EQ(nearestMatches("run", Words{"Run", "Run"}), Words{"Run"});
}

TEST(TaskLookupTests, didYouMeanListsThem) {
  EXPECT_EQ(didYouMean("x", Words{"list"}), "");
  EXPECT_EQ(didYouMean("lst", Words{"list"}), ", did you mean 'list'?");
  EXPECT_EQ(didYouMean("rea", Words{"read", "real"}), ", did you mean 'read' or 'real'?");
  EXPECT_EQ(didYouMean("rea", Words{"read", "real", "rear", "reap"}), ", did you mean 'read', 'real' or 'rear'?");
}

}  // namespace
