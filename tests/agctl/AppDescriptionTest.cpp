#include "agctl/AppDescription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace agctl {
namespace {

using ::testing::HasSubstr;

Outcome<Json> documentOf(const AppDescription& description, const std::string& input = "") {
  std::istringstream in(input);
  return description.document(in);
}

AppDescription fromInput() {
  AppDescription description;
  description.file = "-";
  description.id = "a";
  return description;
}

TEST(AppDescription, OptionsAloneMakeADocument) {
  AppDescription description;
  description.id = "a";
  description.slot = 3;
  description.package = "p";
  EXPECT_EQ(*documentOf(description),
            *readJson(R"({"id":"a","slot":3,"app":{"packageFile":"p"}})"));
}

TEST(AppDescription, EveryOptionHasItsMember) {
  AppDescription description;
  description.id = "a";
  description.slot = 3;
  description.package = "p";
  description.version = "1.2";
  description.deployType = "lxc";
  description.cores = 2;
  description.memory = 512;
  description.disk = 2048;
  description.isVdp = true;
  const auto document = documentOf(description);
  EXPECT_EQ((*document)["version"], "1.2");
  EXPECT_EQ((*document)["app"],
            *readJson(R"({"packageFile":"p","deployType":"lxc","vdp":true,"reqDataHdd":2})"));
  EXPECT_EQ((*document)["resource"],
            *readJson(R"({"reqCpuCores":2,"maxAllowedRam":512,"reqDataHdd":2048})"));
}

TEST(AppDescription, GigabytesAreRoundedUp) {
  const std::pair<std::uint32_t, unsigned> cases[] = {
      {1, 1}, {1024, 1}, {1025, 2}, {4294967295U, 4194304}};
  for (const auto& [megabytes, gigabytes] : cases) {
    AppDescription description;
    description.slot = 1;
    description.package = "p";
    description.disk = megabytes;
    EXPECT_EQ((*documentOf(description))["app"]["reqDataHdd"], gigabytes) << megabytes;
  }
}

TEST(AppDescription, OptionsOverrideTheFileAndLeaveTheRest) {
  AppDescription description = fromInput();
  description.package = "new";
  const auto document = documentOf(
      description, R"({"id":"old","slot":7,"app":{"packageFile":"old","vdp":false},"ldu":{}})");
  EXPECT_EQ(*document,
            *readJson(R"({"id":"a","slot":7,"app":{"packageFile":"new","vdp":false},"ldu":{}})"));
}

TEST(AppDescription, WhatCannotBeReadIsAMistakeOfTheUser) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "standard input: it is no JSON"},
      {"[]", "standard input: it is no JSON object"},
      {R"({"slot":1})", "names no slot or no package"},
      {R"({"app":{"packageFile":"p"}})", "names no slot or no package"},
      {R"({"slot":1,"app":"p"})", "'app' of the description is no object"},
      {std::string(65537, ' '), "longer than 65536 bytes"}};
  for (const auto& [text, cause] : cases) {
    const auto document = documentOf(fromInput(), text);
    ASSERT_FALSE(document) << text.substr(0, 40);
    EXPECT_EQ(document.error().exitCode, ExitCode::kUsage);
    EXPECT_THAT(document.error().cause, HasSubstr(cause));
    EXPECT_NE(document.error().remedy, "");
  }
}

TEST(AppDescription, FileThatIsNotThereIsNamed) {
  AppDescription description;
  description.file = "/none/app.json";
  EXPECT_THAT(documentOf(description).error().cause, HasSubstr("/none/app.json"));
}

TEST(AppDescription, ResourceOfTheFileMustBeAnObject) {
  AppDescription description = fromInput();
  description.cores = 2;
  const auto document =
      documentOf(description, R"({"slot":1,"app":{"packageFile":"p"},"resource":3})");
  EXPECT_THAT(document.error().cause, HasSubstr("'resource' of the description is no object"));
}

}  // namespace
}  // namespace agctl
