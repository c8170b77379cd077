#include "agctl/Completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "agctl/Grammar.h"

namespace agctl {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class CompletionTest : public testing::Test {
 protected:
  Completion complete(const std::vector<std::string>& typed) {
    CommandLine line;
    return agctl::complete(*makeGrammar(line), typed,
                           [this](const std::string& socket, const std::string& config) -> Ask {
                             socket_ = socket;
                             config_ = config;
                             return [this](const std::string& target) {
                               return answer(target);
                             };
                           });
  }
  std::vector<std::string> words(const std::vector<std::string>& typed) {
    return complete(typed).words;
  }

  std::map<std::string, Json> documents_;
  std::vector<std::string> asked_;
  std::string socket_;
  std::string config_;

 private:
  Outcome<Json> answer(const std::string& target) {
    asked_.push_back(target);
    const auto found = documents_.find(target);
    return found == documents_.end()
               ? tl::unexpected(Failure{ExitCode::kUnreachable, "nobody is there", "", {}})
               : Outcome<Json>(found->second);
  }
};

TEST_F(CompletionTest, NounsVerbsAndOptionsComeFromTheTables) {
  EXPECT_THAT(words({""}),
              ElementsAre("chassis", "slot", "app", "job", "timezone", "fault", "completion"));
  EXPECT_THAT(words({"s"}), ElementsAre("slot"));
  EXPECT_THAT(words({"job", ""}), ElementsAre("list", "show", "wait", "cancel"));
  EXPECT_THAT(words({"completion", ""}), ElementsAre("bash"));
  EXPECT_THAT(words({"slot", "format", "3", "--d"}), ElementsAre("--dry-run", "--deliver-within"));
  EXPECT_THAT(words({"slot", "list", "--"}), Contains("--socket"));
  EXPECT_THAT(words({"slot", "list", "-"}), Contains("-o"));
  EXPECT_THAT(asked_, IsEmpty());
}

TEST_F(CompletionTest, OptionThatWasGivenIsNotOfferedAgain) {
  EXPECT_THAT(words({"slot", "format", "3", "--yes", "--y"}), IsEmpty());
  EXPECT_THAT(words({"slot", "list", "-o", "json", "--o"}), IsEmpty());
}

TEST_F(CompletionTest, WordsOfAValueAreOffered) {
  EXPECT_THAT(words({"slot", "log-level", "3", ""}),
              ElementsAre("debug", "info", "warning", "error", "critical"));
  EXPECT_THAT(words({"fault", "set", "HOOK", "--action", "cr"}), ElementsAre("crash"));
  EXPECT_THAT(words({"-o", "j"}), ElementsAre("json"));
  EXPECT_THAT(words({"--output=j"}), ElementsAre("--output=json"));
  EXPECT_THAT(words({"job", "list", "--state", "running,suc"}), ElementsAre("running,succeeded"));
  EXPECT_THAT(words({"job", "list", "--state=f"}), ElementsAre("--state=failed"));
}

TEST_F(CompletionTest, OptionsBetweenTheWordsDoNotMislead) {
  EXPECT_THAT(words({"--timeout", "5", "slot", "-o", "json", "sh"}), ElementsAre("show"));
  EXPECT_THAT(words({"slot", "--socket=x", "log-level", "--wait", "1", "de"}),
              ElementsAre("debug"));
}

TEST_F(CompletionTest, FilesAreTheShellsMatter) {
  for (const auto& typed :
       std::vector<std::vector<std::string>>{{"--config", ""},
                                             {"--socket", "/va"},
                                             {"app", "create", "a", "--file", ""},
                                             {"--config=/etc/"}}) {
    EXPECT_TRUE(complete(typed).wantsFiles) << typed.back();
  }
  EXPECT_FALSE(complete({"slot", ""}).wantsFiles);
}

TEST_F(CompletionTest, SlotsAreTheSupervisors) {
  documents_["/slots"] = Json::parse(R"({"slots":[{"slot":1},{"slot":3},{"slot":31}]})");
  EXPECT_THAT(words({"slot", "show", ""}), ElementsAre("1", "3", "31"));
  EXPECT_THAT(words({"slot", "show", "3"}), ElementsAre("3", "31"));
  EXPECT_THAT(words({"slot", "format", "1,3"}), ElementsAre("1,3", "1,31"));
  EXPECT_THAT(words({"slot", "format", "1-3"}), ElementsAre("1-3", "1-31"));
  EXPECT_THAT(words({"app", "list", "--slot=3"}), ElementsAre("--slot=3", "--slot=31"));
  EXPECT_THAT(words({"slot", "show", "1", ""}), IsEmpty());  // there is one such argument
}

TEST_F(CompletionTest, InstancesJobsAndHooksAreTheSupervisors) {
  documents_["/apps"] = Json::parse(R"({"apps":[{"id":"fw:1"},{"id":"web"}]})");
  documents_["/jobs"] = Json::parse(R"({"jobs":[{"id":9},{"id":8}]})");
  documents_["/jobs?state=accepted,sending,running"] = Json::parse(R"({"jobs":[{"id":9}]})");
  documents_["/jobs?state=accepted,unknown"] = Json::parse(R"({"jobs":[{"id":8}]})");
  documents_["/faults"] = Json::parse(R"({"hooks":["FINJ_PRE_A","FINJ_POST_A"],"faults":[]})");
  EXPECT_THAT(words({"app", "start", ""}), ElementsAre("fw:1", "web"));
  EXPECT_THAT(words({"job", "show", ""}), ElementsAre("9", "8"));
  EXPECT_THAT(words({"job", "wait", "7", ""}), ElementsAre("9"));  // and so on
  EXPECT_THAT(words({"job", "cancel", ""}), ElementsAre("8"));
  EXPECT_THAT(words({"fault", "set", "FINJ_PO"}), ElementsAre("FINJ_POST_A"));
}

TEST_F(CompletionTest, NewInstanceHasANewName) {
  documents_["/apps"] = Json::parse(R"({"apps":[{"id":"web"}]})");
  EXPECT_THAT(words({"app", "create", ""}), IsEmpty());
}

TEST_F(CompletionTest, SupervisorIsTheOneThatWasTyped) {
  words({"--socket", "/run/s", "slot", "show", ""});
  EXPECT_EQ(socket_, "/run/s");
  words({"slot", "show", "--config=/etc/z.toml", ""});
  EXPECT_EQ(config_, "/etc/z.toml");
  EXPECT_EQ(socket_, "");
}

TEST_F(CompletionTest, NothingIsOfferedWithoutASupervisor) {
  EXPECT_THAT(words({"slot", "show", ""}), IsEmpty());
  EXPECT_THAT(asked_, ElementsAre("/slots"));
}

TEST_F(CompletionTest, WhatAShellCouldObeyIsNotOffered) {
  documents_["/apps"] = Json::parse(
      R"-({"apps":[{"id":"$(reboot)"},{"id":"a b"},{"id":"a\u001b[2J"},{"id":""},{},7,{"id":"*"},
               {"id":"ä"},{"id":"a"}]})-");
  EXPECT_THAT(words({"app", "start", ""}), ElementsAre("a"));
}

TEST_F(CompletionTest, NothingFollowsWhatIsWrong) {
  EXPECT_THAT(words({"blade", ""}), IsEmpty());
  EXPECT_THAT(words({"slot", "list", ""}), IsEmpty());
  EXPECT_THAT(words({"slot", "show", "--", "--"}), IsEmpty());
  EXPECT_THAT(words({"slot", "format", "--bogus="}), IsEmpty());
  EXPECT_THAT(words({}), Not(IsEmpty()));  // as if an empty word were being typed
}

}  // namespace
}  // namespace agctl
