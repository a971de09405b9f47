#include <gtest/gtest.h>
#include <HabitraCLI/DisplayText.h>
#include <HabitraCLI/HabitTable.h>
#include <HabitraCLI/ProgressBar.h>

#include <string>

#include "SampleHabit.h"

namespace {

using habitra::cutToWidth;
using habitra::displayable;
using habitra::displayWidth;

TEST(DisplayTests, measuresColumnsAndNotBytes) {
  EXPECT_EQ(displayWidth("Read"), 4u);
  EXPECT_EQ(displayWidth("Läufe"), 5u);
  EXPECT_EQ(displayWidth("La\xCC\x88ufe"), 5u);             // a combining diaeresis
  EXPECT_EQ(displayWidth("\xE8\xAA\xAD\xE6\x9B\xB8"), 4u);  // two ideographs
  EXPECT_EQ(displayWidth("\xF0\x9F\x8F\x83 Run"), 6u);      // an emoji
  EXPECT_EQ(cutToWidth("Läufe", 5), "Läufe");
  EXPECT_EQ(cutToWidth("Läufer", 5), "Läuf…");
  EXPECT_EQ(cutToWidth("\xE8\xAA\xAD\xE6\x9B\xB8", 3), "\xE8\xAA\xAD…");
  EXPECT_EQ(cutToWidth("\xE8\xAA\xAD\xE6\x9B\xB8", 2), "…");  // half of a wide one is none
  EXPECT_EQ(cutToWidth("Read", 0), "");
}

TEST(DisplayTests, letsNothingThroughThatMovesTheCursor) {
  EXPECT_EQ(displayable("a\x1b[2Jb\nc\x7f"), "a\uFFFD[2Jb\uFFFDc\uFFFD");
  EXPECT_EQ(displayable("C1: \xC2\x9B"), "C1: \uFFFD");
  EXPECT_EQ(displayable("cut \xE8\xAA"), "cut \uFFFD\uFFFD");
  EXPECT_EQ(displayable(std::string("nul \0.", 6)), "nul \uFFFD.");
  EXPECT_EQ(displayable("Läufe \xF0\x9F\x8F\x83"), "Läufe \xF0\x9F\x8F\x83");
}

TEST(DisplayTests, alignsColumnsByWidthAndCutsOnlyOnATerminal) {
  habitra::HabitTable table(habitra::HabitTable::LastCompleted::hidden);
  table.addHeading("Page 1");
  table.add(sampleHabit("\xF0\x9F\x8F\x83 Läufe vor dem Frühstück", 5, 120));
  table.add(sampleHabit("Read", 10, 12));
  EXPECT_EQ(table.text({}),
            "Page 1\n"
            "[?] \xF0\x9F\x8F\x83 Läufe vor dem Frühstück  streak  5  best 120\n"
            "[?] Read                        streak 10  best  12\n");
  EXPECT_EQ(table.text({.hasColour = false, .columns = 40}),
            "Page 1\n"
            "[?] \xF0\x9F\x8F\x83 Läufe vor d…  streak  5  best 120\n"
            "[?] Read             streak 10  best  12\n");
  EXPECT_EQ(table.text({.hasColour = true, .columns = 10}),
            "\x1b[1mPage 1\x1b[0m\n"
            "\x1b[2m[?]\x1b[0m \xF0\x9F\x8F\x83 Läuf…  streak  5  best 120\n"
            "\x1b[2m[?]\x1b[0m Read      streak 10  best  12\n");
}

TEST(DisplayTests, aProgressLineFitsItsTerminal) {
  using habitra::progressLine;
  EXPECT_EQ(progressLine("storing", 0.5, 26), "storing [#####     ]  50 %");
  EXPECT_EQ(progressLine("storing", 0.999, 200).substr(49), "]  99 %") << "only what is done is 100 %";
  EXPECT_EQ(progressLine("storing", 7, 24), "storing [########] 100 %");
  EXPECT_EQ(progressLine("storing", -1, 12), "  0 %");
  EXPECT_EQ(progressLine("storing", 0, 3), "  0");
}

}  // namespace
