#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "SchemaPage.h"

namespace habitra {
namespace {

TEST(SchemaTest, ThePageSaysWhatTheDescriptionsSay) {
  std::ifstream file(SCHEMA_PAGE);
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(page == schemaPage()) << "docs/Schema.md is not what the entities' descriptions say; write it anew: "
                                       "HabitraSchema --write docs/Schema.md";
}

}  // namespace
}  // namespace habitra
