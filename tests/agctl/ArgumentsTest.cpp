#include "agctl/Arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "agctl/Offer.h"

namespace agctl {
namespace {

using ::testing::ElementsAre;

TEST(Arguments, SlotsAreRangesInOrder) {
  CLI::App app;
  const auto slots = addSlots(app);
  app.parse("7,1-3");
  EXPECT_THAT(*slots, ElementsAre(1U, 2U, 3U, 7U));
}

TEST(Arguments, WrongSlotsAreAnErrorThatQuotesThem) {
  CLI::App app;
  addSlots(app);
  try {
    app.parse("1-70000");
    FAIL();
  } catch (const CLI::ParseError& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("'1-70000' is outside 1 to 65535"));
  }
}

TEST(Arguments, JobsAreNumbersFromOne) {
  CLI::App app;
  const auto ids = addJobIds(app, kOfferJobs);
  app.parse("17 18446744073709551615");
  EXPECT_THAT(*ids, ElementsAre(17U, 18446744073709551615U));
  for (const char* text : {"0", "-1", "x", "1.5", "18446744073709551616"}) {
    EXPECT_THROW(app.parse(text), CLI::ParseError) << text;
  }
}

TEST(Arguments, WholeNumbersAreDigitsWithinTheirBounds) {
  const CLI::Validator validator = wholeNumber(0, 100);
  for (std::string good : {"0", "7", "100"}) {
    EXPECT_EQ(validator(good), "") << good;
  }
  for (std::string bad :
       {"", "101", "-1", "+1", "0x1", "010", "1 ", "1e1", "99999999999999999999"}) {
    EXPECT_NE(validator(bad), "") << bad;
  }
}

TEST(Arguments, IdentifiersAreWhatTheSupervisorTakes) {
  const CLI::Validator validator = identifier();
  for (std::string good : {"a", "fw-1", "A.b_c:9", "..", "-"}) {
    EXPECT_EQ(validator(good), "") << good;
  }
  std::string longest(128, 'x');
  EXPECT_EQ(validator(longest), "");
  for (std::string bad : {std::string(), std::string("a b"), std::string("a/b"), std::string("ü"),
                          std::string("a\n"), std::string(129, 'x')}) {
    EXPECT_NE(validator(bad), "") << bad;
  }
}

TEST(Arguments, TextsAreShortAndWithoutControlCharacters) {
  const CLI::Validator validator = shortText();
  std::string longest(255, 'x');
  EXPECT_EQ(validator(longest), "");
  for (std::string bad : {std::string(), std::string("a\x1b"), std::string("\x7f"),
                          std::string("\n"), std::string(256, 'x')}) {
    EXPECT_NE(validator(bad), "") << bad;
  }
}

}  // namespace
}  // namespace agctl
