#include "agctl/Table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace agctl {
namespace {

Table sample() {
  Table table({{"ID", Table::Kind::kNumber}, {"NAME"}, {"TEXT", Table::Kind::kLong}, {"END"}});
  table.add({"7", "左", "abcdefghijklmnop", "x"});
  table.add({"12", "right", "", "y"});
  return table;
}

std::string printed(const Table& table, const Screen& screen) {
  std::ostringstream out;
  table.print(out, screen);
  return out.str();
}

Screen terminal(std::size_t columns) {
  Screen screen;
  screen.isTerminal = true;
  screen.columns = columns;
  return screen;
}

TEST(Table, ColumnsAreAlignedByWhatTheyTakeOnAScreen) {
  EXPECT_EQ(printed(sample(), Screen()),
            "ID  NAME   TEXT              END\n"
            " 7  左     abcdefghijklmnop  x\n"
            "12  right  -                 y\n");
}

TEST(Table, LongColumnGivesWayFirst) {
  EXPECT_EQ(printed(sample(), terminal(26)),
            "ID  NAME   TEXT        END\n"
            " 7  左     abcdefghi…  x\n"
            "12  right  -           y\n");
}

TEST(Table, LastColumnsAreLeftOutWhereThereIsNoRoom) {
  EXPECT_EQ(printed(sample(), terminal(20)),
            "ID  NAME   TEXT\n"
            " 7  左     abcdefg…\n"
            "12  right  -\n");
  EXPECT_EQ(printed(sample(), terminal(3)), "ID\n 7\n12\n");
}

TEST(Table, NoLineIsWiderThanTheScreen) {
  for (std::size_t columns = 1; columns <= 40; ++columns) {
    std::istringstream lines(printed(sample(), terminal(columns)));
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(displayWidth(line), columns) << line;
    }
  }
}

TEST(Table, TextOfACellIsEscapedAndStaysInItsRow) {
  Table table({{"A"}, {"B"}});
  table.add({"x\n\x1b[2J", "y"});
  EXPECT_EQ(printed(table, Screen()),
            "A             B\n"
            "x\\x0A\\x1B[2J  y\n");
}

TEST(Table, ColoursDoNotCount) {
  Table table({{"A"}, {"B"}});
  table.add({{"good", Tone::kGood}, "b"});
  Screen screen = terminal(20);
  screen.hasColours = true;
  EXPECT_EQ(printed(table, screen),
            "\x1b[1mA\x1b[0m     \x1b[1mB\x1b[0m\n"
            "\x1b[32mgood\x1b[0m  b\n");
}

}  // namespace
}  // namespace agctl
