#include <QZKit/Checked.h>

#include <gtest/gtest.h>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

constexpr auto greatest = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();

TEST(Checked, GivesExactResultsUpToTheEdges) {
  EXPECT_EQ(qz::checkedAdd(greatest - 1, std::int64_t{1}), greatest);
  EXPECT_EQ(qz::checkedSubtract(least + 1, std::int64_t{1}), least);
  EXPECT_EQ(qz::checkedMultiply(least / 2, std::int64_t{2}), least);
  EXPECT_EQ(qz::checkedNarrow<std::int32_t>(std::int64_t{-2147483648}), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(qz::checkedCount(-2.9), -2);
  EXPECT_EQ(qz::checkedCount(-0x1p63), least);
}

TEST(CheckedDeathTest, StopsWithOneLineThatSaysWhatAndWhere) {
  const auto said = [](const char* what) {
    return std::string("^habitra: stopped: ") + what + ".* at CheckedTests.cpp:[0-9]+\n$";
  };
  EXPECT_DEATH((void)qz::checkedAdd(greatest, std::int64_t{1}),
               said("overflow in an addition \\(9223372036854775807\\)"));
  EXPECT_DEATH((void)qz::checkedSubtract(least, std::int64_t{1}), said("overflow in a subtraction"));
  EXPECT_DEATH((void)qz::checkedMultiply(greatest, std::int64_t{2}), said("overflow in a multiplication"));
  EXPECT_DEATH((void)qz::checkedNarrow<std::int16_t>(40000), said("value does not fit its width \\(40000\\)"));
  EXPECT_DEATH((void)qz::checkedNarrow<std::uint32_t>(-1), said("value does not fit its width \\(-1\\)"));
  EXPECT_DEATH((void)qz::checkedCount(std::nan("")), said("not a count"));
  EXPECT_DEATH((void)qz::checkedCount(0x1p63), said("not a count"));
  EXPECT_DEATH(qz::require(1 > 2, "one\nline only"), said("one line only"));
}

}  // namespace
