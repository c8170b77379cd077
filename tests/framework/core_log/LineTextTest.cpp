#include "framework/core_log/LineText.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <string_view>

#include "framework/core_log/Log.h"

namespace core_log {
namespace {

std::string format(const char* text, ...) {
  std::va_list args;
  va_start(args, text);
  std::string line = formatLine(text, args);
  va_end(args);
  return line;
}

std::string escape(std::string_view text) {
  return escapeLine(text, text.size());
}

TEST(FormatLine, FormatWithoutLineFeed_IsTheText) {
  EXPECT_EQ(format("Worker %d waiting", 3), "Worker 3 waiting");
}

TEST(FormatLine, FormatEndsInLineFeed_LosesThatOne) {
  EXPECT_EQ(format("Waiting for channel init...\n"), "Waiting for channel init...");
  EXPECT_EQ(format(".... Channel initialized. \n"), ".... Channel initialized. ");
}

TEST(FormatLine, ArgumentEndsInLineFeed_IsEscaped) {
  EXPECT_EQ(format("slot %s", "1\n"), "slot 1\\x0A");
}

TEST(FormatLine, ArgumentAndFormatEndInLineFeed_OnlyTheArgumentsIsEscaped) {
  EXPECT_EQ(format("slot %s\n", "1\n"), "slot 1\\x0A");
}

TEST(FormatLine, OnlyALineFeed_IsEmpty) {
  EXPECT_EQ(format("\n"), "");
}

TEST(FormatLine, EmptyFormat_IsEmpty) {
  EXPECT_EQ(format("%s", ""), "");
}

TEST(FormatLine, NulCharacterArgument_IsEscaped) {
  EXPECT_EQ(format("a%cb", 0), "a\\x00b");
}

TEST(FormatLine, TextAroundTheInternalBuffersSize_IsComplete) {
  for (const std::size_t size : {8190U, 8191U, 8192U, 8193U}) {
    const std::string argument(size, 'x');
    EXPECT_EQ(format("%s", argument.c_str()), argument);
    EXPECT_EQ(format("%s\n", argument.c_str()), argument);
  }
}

TEST(FormatLine, TextOfTheBound_IsComplete) {
  const std::string argument(65536, 'x');
  EXPECT_EQ(format("%s", argument.c_str()), argument);
  EXPECT_EQ(format("%s\n", argument.c_str()), argument);
}

TEST(FormatLine, TextBeyondTheBound_IsCutAndMarked) {
  const std::string argument(65537, 'x');
  const std::string line = format("%s", argument.c_str());
  EXPECT_LE(line.size(), 65536U);
  EXPECT_GE(line.size(), 65400U);
  EXPECT_TRUE(line.ends_with("x...[cut, 65537 bytes]")) << line.substr(line.size() - 60);
}

TEST(FormatLine, MegabyteBeforeALineFeed_MarkerNamesTheLengthOfTheText) {
  const std::string document(1048576, 'x');
  const std::string line = format("Message : %s\n", document.c_str());
  EXPECT_LE(line.size(), 65536U);
  EXPECT_TRUE(line.ends_with("...[cut, 1048586 bytes]")) << line.substr(line.size() - 60);
}

TEST(FormatLine, TextThatGrowsBeyondTheBoundByEscaping_IsCutBetweenEscapes) {
  const std::string argument(40000, '\n');
  const std::string line = format("%s", argument.c_str());
  EXPECT_LE(line.size(), 65536U);
  EXPECT_TRUE(line.ends_with("\\x0A...[cut, 40000 bytes]")) << line.substr(line.size() - 60);
}

TEST(FormatLine, CutInsideACharacter_LeavesTheCharacterOut) {
  std::string text;
  for (int i = 0; i < 30000; ++i) {
    text += "\xF0\x9F\x98\x80";
  }
  for (const char* const shift : {"", "x", "xx", "xxx"}) {
    const std::string line = format("%s%s\n", shift, text.c_str());
    EXPECT_LE(line.size(), 65536U);
    EXPECT_NE(line.find("\xF0\x9F\x98\x80...[cut, 12000"), std::string::npos);
    EXPECT_EQ(line.find("\\x"), std::string::npos);
  }
}

TEST(FormatLine, WidthBeyondWhatPrintfCounts_NamesTheFormat) {
  EXPECT_EQ(format("%2147483648d", 1), "(unprintable) %2147483648d");
}

TEST(EscapeLine, PlainAscii_StaysAsItIs) {
  EXPECT_EQ(escape(" !az~<tag attr=\"1\">\\"), " !az~<tag attr=\"1\">\\");
}

TEST(EscapeLine, AsciiControlCharacters_AreEscaped) {
  EXPECT_EQ(escape("a\nb\rc\td"), "a\\x0Ab\\x0Dc\\x09d");
  EXPECT_EQ(escape("\x1B[2J\x7F\x07"), "\\x1B[2J\\x7F\\x07");
  EXPECT_EQ(escape(std::string_view("\0\x1F", 2)), "\\x00\\x1F");
}

TEST(EscapeLine, ValidUtf8_StaysAsItIs) {
  const std::string_view text = "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBD\xC2\xA0";
  EXPECT_EQ(escape(text), text);
}

TEST(EscapeLine, C1ControlCharacters_AreEscaped) {
  EXPECT_EQ(escape("\xC2\x80\xC2\x9B\xC2\x9F"), "\\xC2\\x80\\xC2\\x9B\\xC2\\x9F");
}

TEST(EscapeLine, InvalidUtf8_IsEscapedByteByByte) {
  EXPECT_EQ(escape("\x9B"), "\\x9B");                             // a lone continuation
  EXPECT_EQ(escape("\xFF\xFE"), "\\xFF\\xFE");                    // never a lead
  EXPECT_EQ(escape("\xC0\x8A"), "\\xC0\\x8A");                    // an overlong LF
  EXPECT_EQ(escape("\xE0\x80\x8A"), "\\xE0\\x80\\x8A");           // a longer overlong LF
  EXPECT_EQ(escape("\xF0\x80\x80\x8A"), "\\xF0\\x80\\x80\\x8A");  // the longest overlong LF
  EXPECT_EQ(escape("\xED\xA0\x80"), "\\xED\\xA0\\x80");           // a surrogate
  EXPECT_EQ(escape("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");  // beyond U+10FFFF
  EXPECT_EQ(escape("\xE2\x82"), "\\xE2\\x82");                    // ends too soon
  EXPECT_EQ(escape("\xE2\x82\nx"), "\\xE2\\x82\\x0Ax");           // broken off by an LF
  EXPECT_EQ(escape("\xC3\xC3\xA9"), "\\xC3\xC3\xA9");             // starts again
}

}  // namespace
}  // namespace core_log
