#include <HabitraModel/Tasks/Recording/TaskModifyContext.h>
#include <QZDateTime/DecodingError.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace habitra {
namespace {

using nlohmann::json;

TEST(TaskModifyContext, IsCodedByItsNameAlone) {
  EXPECT_EQ(json(TaskModifyContext::userInitiatedFromMainApp).dump(), R"({"userInitiatedFromMainApp":{}})");
  for (const auto& row : RawValueTable<TaskModifyContext>::rows)
    EXPECT_EQ(json(row.value).get<TaskModifyContext>(), row.value);
  for (const char* other : {R"({})", R"({"other":{}})", R"("userInitiatedFromMainApp")", R"(0)",
                            R"({"userInitiatedFromMainApp":null})", R"({"userInitiatedFromMainApp":{"_0":1}})",
                            R"({"userInitiatedFromMainApp":{},"userInitiatedFromDeepLink":{}})"})
    EXPECT_THROW((void)json::parse(other).get<TaskModifyContext>(), qz::DecodingError) << other;
}

}  // namespace
}  // namespace habitra
