#include "agctl/Details.h"

#include <gtest/gtest.h>

#include <sstream>

namespace agctl {
namespace {

std::string printed(const char* text, std::size_t columns = Screen::kEndless) {
  std::ostringstream out;
  Screen screen;
  screen.columns = columns;
  printDetails(out, screen, *readJson(text));
  return out.str();
}

TEST(Details, ValuesStandInOneColumnAndPartsBelowTheirName) {
  EXPECT_EQ(printed(R"({"slot":3,"name":"","monitor":null,"list":["a","b"],"none":[],
                       "beats":{"received":17,"missed":0},
                       "instances":[{"id":"a","faults":[{"kind":"x"}]},{"id":"b"},5]})"),
            "slot     3\n"
            "name     -\n"
            "monitor  -\n"
            "list     a, b\n"
            "none     -\n"
            "beats\n"
            "  received  17\n"
            "  missed    0\n"
            "instances\n"
            "  - id  a\n"
            "    faults\n"
            "      - kind  x\n"
            "  - id  b\n"
            "  - 5\n");
}

TEST(Details, NumberWithAName_IsShownByIt) {
  EXPECT_EQ(printed(R"({"state":7,"stateName":"started","expectedStateName":"x","hostName":"a",
                       "host":"b","note":1,"noteName":2})"),
            "state              started\n"
            "expectedStateName  x\n"
            "hostName           a\n"
            "host               b\n"
            "note               1\n"
            "noteName           2\n");
}

TEST(Details, TimesAreWrittenOut) {
  EXPECT_EQ(printed(R"({"acceptedAt":1767225600999,"sentAt":0,"finishBy":18446744073709551615})"),
            "acceptedAt  2026-01-01 00:00:00Z\n"
            "sentAt      -\n"
            "finishBy    18446744073709551615\n");
}

TEST(Details, HostileTextStaysInItsLine) {
  EXPECT_EQ(printed("{\"a\\n\":\"\\u001b[2J\",\"b\":{}}"),
            "a\\x0A  \\x1B[2J\n"
            "b\n");
}

TEST(Details, NoLineIsWiderThanTheScreen) {
  EXPECT_EQ(printed(R"({"name":"abcdefgh","o":{"p":[{"q":"abcdefgh"}]}})", 10),
            "name  abc…\n"
            "o\n"
            "  p\n"
            "    - q  …\n");
}

}  // namespace
}  // namespace agctl
