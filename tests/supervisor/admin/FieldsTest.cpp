#include "supervisor/admin/Fields.h"

#include <gtest/gtest.h>

#include <functional>

#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

/// What reading the object comes to: "FIELD: DETAIL (REMEDY)" or nothing.
std::string complaint(const Json& json, const std::function<void(Fields&)>& read) {
  try {
    Fields fields(json);
    read(fields);
    fields.end();
  } catch (const ProblemError& error) {
    const Problem& problem = error.problem();
    EXPECT_EQ(problem.status, 400u);
    return problem.kind + " " + problem.field.value_or("(none)") + ": " + problem.detail + " (" +
           problem.remedy + ")";
  }
  return "";
}

TEST(Fields, Members_AreReadByTheirNames) {
  const Json json = Json::parse(
      R"({"text":"a b","number":7,"inner":{"text":"c"},"list":[{"number":1},{"number":2}]})");
  EXPECT_EQ(complaint(json,
                      [](Fields& fields) {
                        EXPECT_EQ(fields.text("text"), "a b");
                        EXPECT_EQ(fields.number("number", 7, 7), 7u);
                        EXPECT_EQ(fields.object("inner")->text("text"), "c");
                        EXPECT_EQ(fields.list("list", 2).at(1).number("number", 0, 9), 2u);
                        EXPECT_FALSE(fields.text("absent"));
                        EXPECT_FALSE(fields.number("absent", 0, 1));
                        EXPECT_FALSE(fields.object("absent"));
                        EXPECT_TRUE(fields.list("absent", 1).empty());
                      }),
            "");
}

TEST(Fields, UnknownMember_IsNamedWithItsPath) {
  EXPECT_EQ(complaint(Json::parse(R"({"a":1,"b":2})"),
                      [](Fields& fields) {
                        fields.number("a", 0, 9);
                        fields.text("c");
                      }),
            "unknown-field b: 'b' is not known (known here are: a, c)");
  EXPECT_EQ(complaint(Json::parse(R"({"ldu":{"links":[{"vlan":1},{"vlam":1}]}})"),
                      [](Fields& fields) {
                        for (Fields& link : fields.object("ldu")->list("links", 9)) {
                          link.number("vlan", 0, 9);
                          link.end();
                        }
                      }),
            "unknown-field ldu.links[1].vlam: 'ldu.links[1].vlam' is not known (known here are: "
            "vlan)");
  EXPECT_EQ(complaint(Json::parse(R"({"a":1})"), [](Fields&) {}),
            "unknown-field a: 'a' is not known (send an empty object or no body)");
  EXPECT_EQ(complaint(Json::parse(R"({"":1})"), [](Fields&) {}),
            "unknown-field : '' is not known (send an empty object or no body)");
}

TEST(Fields, WrongValue_IsNamedWithWhatIsWanted) {
  const auto text = [](Fields& fields) {
    fields.text("a");
  };
  const auto required = [](Fields& fields) {
    fields.requiredText("a");
  };
  const auto number = [](Fields& fields) {
    fields.number("a", 1, 10);
  };
  const auto object = [](Fields& fields) {
    fields.object("a");
  };
  const auto list = [](Fields& fields) {
    fields.list("a", 1);
  };
  const std::string range = "give a whole number from 1 to 10)";
  const std::string plain = "give at most 255 bytes without control characters)";
  const struct {
    std::string json;
    std::function<void(Fields&)> read;
    std::string complaint;
  } rows[] = {
      {R"({"a":1})", text, "'a' is 1 (give a text)"},
      {R"({"a":null})", text, "'a' is null (give a text)"},
      {R"({"a":"x\ny"})", text, "'a' is \"x\\ny\" (" + plain},
      {R"({"a":"\u007f"})", text, "'a' is \"\x7f\" (" + plain},
      {R"({"a":")" + std::string(256, 'x') + R"("})", text,
       "'a' is \"" + std::string(79, 'x') + "... (" + plain},
      {R"({})", required, "'a' is missing (give a text that is not empty)"},
      {R"({"a":""})", required, "'a' is missing (give a text that is not empty)"},
      {R"({"a":0})", number, "'a' is 0 (" + range},
      {R"({"a":11})", number, "'a' is 11 (" + range},
      {R"({"a":-1})", number, "'a' is -1 (" + range},
      {R"({"a":2.5})", number, "'a' is 2.5 (" + range},
      {R"({"a":1e3})", number, "'a' is 1000.0 (" + range},
      {R"({"a":18446744073709551616})", number, "'a' is 1.8446744073709552e+19 (" + range},
      {R"({"a":"5"})", number, "'a' is \"5\" (" + range},
      {R"({"a":true})", number, "'a' is true (" + range},
      {R"({"a":[]})", object, "'a' is a list (give an object)"},
      {R"({"a":{}})", list, "'a' is an object (give a list of at most 1)"},
      {R"({"a":[{},{}]})", list, "'a' is a list (give a list of at most 1)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(complaint(Json::parse(row.json), row.read), "bad-value a: " + row.complaint)
        << row.json;
  }
  EXPECT_EQ(complaint(Json::parse(R"({"a":[1]})"), list),
            "bad-value a[0]: 'a[0]' is 1 (give an object)");
}

TEST(Fields, LongValue_IsQuotedToTheEndOfACharacter) {
  const auto quoted = [](const std::string& text) {
    return complaint(Json{{"a", text}}, [](Fields& fields) { fields.number("a", 0, 9); });
  };
  const auto cut = [](const std::string& text) {
    return "bad-value a: 'a' is \"" + text + "... (give a whole number from 0 to 9)";
  };
  const std::string euro = "\xe2\x82\xac";  // one character
  const std::string tail(20, 'x');
  // Behind the quotation mark there is room for 79 bytes.
  const struct {
    std::size_t plain;
    std::string last;
    std::string shown;
  } rows[] = {
      {76, euro, euro},  {77, euro, ""},     {78, euro, ""},          {79, euro, ""},
      {77, "\n", "\\n"}, {78, "\n", ""},     {73, "\x01", "\\u0001"}, {74, "\x01", ""},
      {78, "\x01", ""},  {77, "\\", "\\\\"}, {78, "\\", ""},
  };
  for (const auto& row : rows) {
    const std::string plain(row.plain, 'x');
    EXPECT_EQ(quoted(plain + row.last + tail), cut(plain + row.shown)) << row.plain << row.last;
  }
  // A value that just fits is whole.
  const std::string whole = std::string(75, 'x') + euro;
  EXPECT_EQ(quoted(whole),
            "bad-value a: 'a' is \"" + whole + "\" (give a whole number from 0 to 9)");
}

TEST(Fields, Flag_IsTrueOrFalse) {
  EXPECT_TRUE(flagIn(Json(true), "x"));
  EXPECT_FALSE(flagIn(Json(false), "x"));
  EXPECT_THROW(flagIn(Json(1), "x"), ProblemError);
}

}  // namespace
}  // namespace supervisor::admin
