#include <QZKit/UniqueID.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using qz::UniqueID;
using namespace std::chrono_literals;

constexpr qz::Moment noon{1'706'702'400'123ms};

TEST(UniqueID, ReadsAnyUUIDInAnyCaseAndNothingElse) {
  const auto id = UniqueID::fromText("946d21f1-5D7c-5e6a-a309-E01fac24628A");
  ASSERT_TRUE(id);
  EXPECT_EQ(id->text(), "946D21F1-5D7C-5E6A-A309-E01FAC24628A");
  for (const auto* text : {"", "946D21F1-5D7C-5E6A-A309-E01FAC24628", "946D21F1-5D7C-5E6A-A309-E01FAC24628AB",
                           "946D21F15D7C5E6AA309E01FAC24628A", "{46D21F1-5D7C-5E6A-A309-E01FAC24628}",
                           "946D21F1-5D7C-5E6A-A309-E01FAC24628G", "946D21F1-5D7C-5E6AA-309-E01FAC24628A",
                           " 46D21F1-5D7C-5E6A-A309-E01FAC24628A"})
    EXPECT_FALSE(UniqueID::fromText(text)) << text;
}

TEST(UniqueID, NewOnesCarryTheirMomentAndVersion) {
  const std::string text = UniqueID::generate(qz::Moment{4'000'000'000'000ms}).text();
  EXPECT_EQ(text.substr(0, 13), "03A35294-4000");
  EXPECT_EQ(text[14], '7');
  EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos);
  EXPECT_EQ(UniqueID::fromText(text)->text(), text);
}

TEST(UniqueID, NewOnesRiseEvenWhenTheClockGoesBack) {
  UniqueID last = UniqueID::generate(noon);
  for (int i = 0; i < 10'000; ++i) {
    const UniqueID next = UniqueID::generate(noon - std::chrono::seconds(i));
    EXPECT_LT(last, next);
    EXPECT_LT(last.text(), next.text());
    last = next;
  }
}

TEST(UniqueID, ThreadsNeverMakeTheSameOne) {
  std::vector<std::vector<UniqueID>> made(4);
  {
    std::vector<std::jthread> threads;
    for (auto& own : made)
      threads.emplace_back([&own] {
        for (int i = 0; i < 5'000; ++i) own.push_back(UniqueID::generate(noon));
      });
  }
  std::set<UniqueID> all;
  for (const auto& own : made) all.insert(own.begin(), own.end());
  EXPECT_EQ(all.size(), 20'000u);
}

TEST(UniqueID, ACopyOfTheProcessMakesOthers) {
  static_cast<void>(UniqueID::generate(noon));
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const pid_t child = ::fork();
  std::string theirs = UniqueID::generate(noon).text();
  if (child == 0) ::_exit(::write(ends[1], theirs.data(), theirs.size()) > 0 ? 0 : 1);
  const std::string ours = theirs;
  ASSERT_EQ(::read(ends[0], theirs.data(), theirs.size()), static_cast<ssize_t>(theirs.size()));
  EXPECT_NE(theirs, ours);
  ::waitpid(child, nullptr, 0);
  for (const int end : ends) ::close(end);
}

}  // namespace
