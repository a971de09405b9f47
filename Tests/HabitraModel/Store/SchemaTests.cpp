#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "SchemaPage.h"
#include "StoreFixture.h"

namespace habitra {
namespace {

using SchemaTest = StoreTest;

TEST_F(SchemaTest, ThePageSaysWhatTheDescriptionsSay) {
  std::ifstream file(SCHEMA_PAGE);
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(page == schemaPage()) << "docs/Schema.md is not what the entities' descriptions say; write it anew: "
                                       "HabitraSchema --write docs/Schema.md";
}

/// Every command looks for pending requests, and the done ones are kept for good.
TEST_F(SchemaTest, PendingHealthRequestsAreFoundWithoutTheOthers) {
  (void)openStore();
  const auto plan = runSQL(
      file(), "EXPLAIN QUERY PLAN SELECT * FROM HealthKitRequestEntity WHERE status IS 'pending' ORDER BY objectID");
  EXPECT_NE(plan.front().find("USING INDEX HealthKitRequestEntity_status"), std::string::npos) << plan.front();
}

}  // namespace
}  // namespace habitra
