#include <gtest/gtest.h>
#include <QZKit/EditDistance.h>

namespace {

using qz::editDistance;

TEST(EditDistanceTests, CountsSlipsOfThePen) {
  EXPECT_EQ(editDistance("", ""), 0u);
  EXPECT_EQ(editDistance("list", "list"), 0u);
  EXPECT_EQ(editDistance("", "list"), 4u);
  EXPECT_EQ(editDistance("list", ""), 4u);
  EXPECT_EQ(editDistance("lst", "list"), 1u);
  EXPECT_EQ(editDistance("listt", "list"), 1u);
  EXPECT_EQ(editDistance("lost", "list"), 1u);
  EXPECT_EQ(editDistance("kitten", "sitting"), 3u);
}

TEST(EditDistanceTests, SwappedNeighboursAreOneSlip) {
  EXPECT_EQ(editDistance("ab", "ba"), 1u);
  EXPECT_EQ(editDistance("raed", "read"), 1u);
  EXPECT_EQ(editDistance("abcd", "badc"), 2u);
  EXPECT_EQ(editDistance("abcd", "cdab"), 4u);
}

TEST(EditDistanceTests, CharactersOrBytes) {
  EXPECT_EQ(editDistance(U"Öl", U"Ol"), 1u);
  EXPECT_EQ(editDistance("\xC3\x96l", "Ol"), 2u);
}

}  // namespace
