#include "supervisor/admin/Json.h"

#include <gtest/gtest.h>

#include <limits>

namespace supervisor::admin {
namespace {

std::string textOf(const method::Value& value) {
  return render(toJson(value));
}

TEST(Json, WholeNumbers_AreExact) {
  EXPECT_EQ(textOf(std::uint64_t{9007199254740993}), "9007199254740993");
  EXPECT_EQ(textOf(std::uint64_t{18446744073709551615U}), "18446744073709551615");
  EXPECT_EQ(textOf(std::numeric_limits<std::int32_t>::min()), "-2147483648");
  EXPECT_EQ(textOf(std::uint32_t{4294967295}), "4294967295");
  EXPECT_EQ(textOf(std::uint8_t{255}), "255");
}

TEST(Json, Fractions_HaveTheFewestDigits) {
  EXPECT_EQ(textOf(0.1F), "0.1");
  EXPECT_EQ(textOf(3.4028235e38F), "3.4028235e+38");
  EXPECT_EQ(textOf(-0.25F), "-0.25");
  EXPECT_EQ(textOf(2.0F), "2.0");
}

TEST(Json, NoNumber_IsNull) {
  EXPECT_EQ(textOf(std::numeric_limits<float>::quiet_NaN()), "null");
  EXPECT_EQ(textOf(-std::numeric_limits<float>::infinity()), "null");
}

TEST(Json, BoolAndUnset_AreThemselves) {
  EXPECT_EQ(textOf(true), "true");
  EXPECT_EQ(textOf(std::monostate()), "null");
}

TEST(Json, HostileText_IsEscapedAndReplaced) {
  EXPECT_EQ(textOf(base::String("a\"\\\n\x1b</script>")), R"("a\"\\\n\u001b</script>")");
  EXPECT_EQ(textOf(base::String("\xff\xc3(\xed\xa0\x80")),
            "\"\xEF\xBF\xBD\xEF\xBF\xBD(\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\"");
  EXPECT_EQ(textOf(base::String(std::string("a\0b", 3))), R"("a\u0000b")");
  EXPECT_EQ(textOf(base::String("Gr\xC3\xBC\xC3\x9F")), "\"Gr\xC3\xBC\xC3\x9F\"");
}

TEST(Json, Model_IsAnObjectALine) {
  const std::vector<dme::ObjectView> objects{
      {"sys", "system", {{"epoch", std::uint64_t{7}}, {"name", base::String("n")}}},
      {"sys/x\xff", "slot", {}}};
  EXPECT_EQ(renderModel(objects),
            "{\"objects\":[\n"
            "{\"dn\":\"sys\",\"class\":\"system\",\"properties\":{\"epoch\":7,\"name\":\"n\"}},\n"
            "{\"dn\":\"sys/x\xEF\xBF\xBD\",\"class\":\"slot\",\"properties\":{}}\n"
            "]}\n");
  EXPECT_EQ(renderModel({}), "{\"objects\":[\n]}\n");
}

}  // namespace
}  // namespace supervisor::admin
