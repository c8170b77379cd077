#include "supervisor/admin/JsonBody.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

using ::testing::HasSubstr;

Problem problemOf(const Request& request) {
  try {
    ADD_FAILURE() << "taken: " << bodyOf(request).dump();
  } catch (const ProblemError& error) {
    return error.problem();
  }
  return {};
}

Problem problemOf(const std::string& body) {
  return problemOf({"POST", "/", {}, {}, "application/json", body});
}

std::string nested(int levels) {
  return std::string(static_cast<std::size_t>(levels), '[') +
         std::string(static_cast<std::size_t>(levels), ']');
}

std::string withMembers(std::size_t count) {
  Json json;
  for (std::size_t i = 0; i < count; ++i) {
    json["m" + std::to_string(i)] = i;
  }
  return json.dump();
}

TEST(JsonBody, Object_IsTaken) {
  EXPECT_EQ(parseBody(withMembers(kMostMembers)).size(), kMostMembers);
  EXPECT_EQ(parseBody("{\"b\":[1,{\"a\":\"\\u00e4\"}],\"a\":18446744073709551615}").dump(),
            "{\"b\":[1,{\"a\":\"\xC3\xA4\"}],\"a\":18446744073709551615}");
  EXPECT_EQ(parseBody("{\"a\":" + nested(kMostBodyDepth - 1) + "}").size(), 1u);
  EXPECT_EQ(parseBody("{\"a\":{\"x\":1},\"b\":{\"x\":1}}").size(), 2u);
}

TEST(JsonBody, NoBody_IsAnEmptyObject) {
  EXPECT_EQ(bodyOf({"POST", "/", {}, {}, "", ""}).dump(), "{}");
}

TEST(JsonBody, Hostile_IsABadBody) {
  const struct {
    std::string body;
    const char* detail;
  } rows[] = {
      {"nonsense", "parse error at line 1, column 2"},
      {"{\"a\":1", "unexpected end of input"},
      {"{} {}", "unexpected '{'; expected end of input"},
      {"[]", "no JSON object"},
      {"null", "no JSON object"},
      {"7", "no JSON object"},
      {"{\"a\":1,\"b\":2,\"a\":3}", "the member 'a' stands twice"},
      {"{\"x\":{\"a\":1,\"a\":1}}", "the member 'a' stands twice"},
      {"{\"a\":" + nested(kMostBodyDepth) + "}", "nested more than 8 levels"},
      {"{\"a\":" + std::string(60'000, '['), "nested more than 8 levels"},
      {"{\"a\":" + std::string(60'000, '[') + std::string(60'000, ']') + "}", "nested more than"},
      {"{\"a\":1e999}", "number overflow"},
      {"{\"a\":NaN}", "invalid literal"},
      {"{\"a\":\"\xff\"}", "ill-formed UTF-8"},
      {"{\"a\":\"\xc0\xaf\"}", "ill-formed UTF-8"},
      {"{\"a\":\"\\ud800\"}", "surrogate"},
      {"{\"\xed\xa0\x80\":1}", "ill-formed UTF-8"},
      {std::string("{\"a\":\"\0\"}", 9), "control character"},
      {"\xEF\xBB", "BOM"},
      {withMembers(kMostMembers + 1), "more than 64 members"},
  };
  for (const auto& row : rows) {
    const Problem problem = problemOf(row.body);
    EXPECT_EQ(problem.status, 400u) << row.detail;
    EXPECT_EQ(problem.kind, "bad-body") << row.detail;
    EXPECT_THAT(problem.detail, HasSubstr(row.detail));
    EXPECT_NE(problem.remedy, "");
  }
}

TEST(JsonBody, OtherMediaType_IsRefused) {
  for (const char* type : {"", "text/json", "application/x-www-form-urlencoded",
                           "application/json2", "json", "application/problem+json"}) {
    const Problem problem = problemOf({"POST", "/", {}, {}, type, "{}"});
    EXPECT_EQ(problem.status, 415u) << type;
    EXPECT_EQ(problem.kind, "unsupported-media-type");
  }
  for (const char* type :
       {"application/json", "Application/JSON; charset=utf-8", "application/json ;x=y"}) {
    EXPECT_EQ(bodyOf({"POST", "/", {}, {}, type, "{\"a\":1}"}).dump(), "{\"a\":1}") << type;
  }
}

}  // namespace
}  // namespace supervisor::admin
