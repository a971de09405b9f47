#include <HabitraModel/Tasks/Processing/LastProcessedDates.h>

#include <gtest/gtest.h>
#include <chrono>

namespace habitra {
namespace {

TEST(LastProcessedDatesTest, FollowThePassesAndLetGoOfTasksThatAreGone) {
  const auto defaults = KeyValueDefaults::inMemory();
  const qz::Moment noon = std::chrono::sys_days(std::chrono::year(2024) / 1 / 31) + std::chrono::hours(12);
  defaults->set("other", std::int64_t{1});
  LastProcessedDates dates(*defaults);
  EXPECT_TRUE(dates.read().empty());
  dates.merge({{"A", noon}, {"B", noon}});
  dates.merge({{"B", noon + std::chrono::hours(24)}, {"C", noon}});
  EXPECT_EQ(LastProcessedDates(*defaults).read(),
            (LastProcessedDates::Dates{{"A", noon}, {"B", noon + std::chrono::hours(24)}, {"C", noon}}));
  dates.removeStale({"C", "D"});
  EXPECT_EQ(dates.read(), (LastProcessedDates::Dates{{"C", noon}}));
  EXPECT_EQ(defaults->get<std::int64_t>("other"), 1);
  defaults->set(LastProcessedDates::key, true);
  EXPECT_TRUE(dates.read().empty()) << "what stands there is something else";
}

}  // namespace
}  // namespace habitra
