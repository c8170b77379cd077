#include "serviceOrchAG/handlers/SlotIdentity.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/base/SvcConfigParams.h"
#include "tests/support/Configured.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::Configured;
using test_support::LogCapture;
using test_support::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

// ----- Identity ---------------------------------------------------------------------------------

struct Identity {
  const char* text;
  std::int32_t slot;
};

class Identities : public testing::TestWithParam<Identity> {};

TEST_P(Identities, GetIdentitySlotId_ReadsTheNumberBehindTheFirstPrefix) {
  LogCapture log;
  EXPECT_EQ(GetParam().slot, getIdentitySlotId(GetParam().text));
  EXPECT_THAT(log.lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, Identities,
                         testing::Values(Identity{"sma_slot1", 1}, Identity{"sma_slot3", 3},
                                         Identity{"sma_slot03", 3}, Identity{"sma_slot+3", 3},
                                         Identity{"sma_slot-1", -1}, Identity{"xsma_slot3", 3},
                                         Identity{"sma_slot3sma_slot9", 3},
                                         Identity{"sma_slot2147483647", 2147483647},
                                         Identity{"sma_slot-2147483648", -2147483647 - 1}));

/// The text of what getIdentitySlotId throws.
std::string refusalOf(const std::string& identity) {
  try {
    getIdentitySlotId(identity);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "accepted";
}

class ForeignIdentities : public testing::TestWithParam<std::string> {};

TEST_P(ForeignIdentities, GetIdentitySlotId_RefusesTheIdentity) {
  LogCapture log;
  EXPECT_EQ("invalid client identity", refusalOf(GetParam()));
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{8, "getIdentitySlotId",
                                               "SMA sending wrong client identity. Got = " +
                                                   GetParam() + "  Expected = sma_slot<#ID>"}));
}

INSTANTIATE_TEST_SUITE_P(All, ForeignIdentities,
                         testing::Values("", "blade1", "SMA_SLOT3", "sma_slo", "sma slot3",
                                         "%s%n"));

TEST(GetIdentitySlotId, ZeroSlot_IsRefusedWithoutALine) {
  LogCapture log;
  EXPECT_EQ("invalid slot Id", refusalOf("sma_slot0"));
  EXPECT_EQ("invalid slot Id", refusalOf("sma_slot-0"));
  EXPECT_EQ("invalid slot Id", refusalOf("sma_slot000"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

class NoSlotNumbers : public testing::TestWithParam<const char*> {};

TEST_P(NoSlotNumbers, GetIdentitySlotId_RefusesTheConversion) {
  LogCapture log;
  const std::string piece = GetParam();
  EXPECT_EQ("invalid slot Id conversion", refusalOf("sma_slot" + piece));
  ASSERT_EQ(1U, log.lines().size());
  EXPECT_EQ(8, log.lines()[0].level);
  EXPECT_EQ("getIdentitySlotId", log.lines()[0].function);
  EXPECT_THAT(log.lines()[0].text, testing::StartsWith("Exception caught for sma_slot" + piece +
                                                       " : slot Id [" + piece + "] : "));
  EXPECT_THAT(log.lines()[0].text, testing::Not(testing::EndsWith("] : ")));
}

INSTANTIATE_TEST_SUITE_P(All, NoSlotNumbers,
                         testing::Values("", "X", "3abc", " 3", "3 ", "0x3", "3.0", "2147483648",
                                         "-2147483649", "--3", "+", "99999999999999999999"));

TEST(GetIdentitySlotId, NulBehindTheNumber_IsRefused) {
  LogCapture log;
  EXPECT_EQ("invalid slot Id conversion", refusalOf(std::string("sma_slot3\0", 10)));
}

TEST(GetIdentitySlotId, MegabyteIdentity_IsRefused) {
  LogCapture log;
  EXPECT_EQ("invalid client identity", refusalOf(std::string(1024 * 1024, 'x')));
  std::string repeated;
  while (repeated.size() < 1024 * 1024) {
    repeated += "sma_slot";
  }
  EXPECT_EQ("invalid slot Id conversion", refusalOf(repeated));
}

// ----- Values -----------------------------------------------------------------------------------

TEST(Trim, BothEnds_LoseWhiteSpaceOnly) {
  EXPECT_EQ(base::String("abc"), trim("\t abc \r\n"));
  EXPECT_EQ(base::String("abc"), trim("abc"));
  EXPECT_EQ(base::String("abc"), trim("\f\vabc\v\f"));
  EXPECT_EQ(base::String("a \t\n b"), trim(" a \t\n b "));
  EXPECT_EQ(base::String("a"), trim("a "));
  EXPECT_EQ(base::String("a"), trim(" a"));
}

TEST(Trim, OnlyWhiteSpace_YieldsEmpty) {
  EXPECT_EQ(base::String(""), trim("   "));
  EXPECT_EQ(base::String(""), trim(" \t\n\r\f\v"));
  EXPECT_EQ(base::String(""), trim(""));
}

TEST(Trim, OtherBlanks_Stay) {
  EXPECT_EQ(base::String("\xc2\xa0x\xc2\xa0"), trim("\xc2\xa0x\xc2\xa0"));
  EXPECT_EQ(base::String(std::string("\0a\0", 3)), trim(std::string("\0a\0", 3)));
}

TEST(GetAdminState, Words_AreComparedExactly) {
  EXPECT_EQ(7, getAdminState("enable"));
  EXPECT_EQ(3, getAdminState("disable"));
  EXPECT_EQ(-1, getAdminState("Enable"));
  EXPECT_EQ(-1, getAdminState("enabled"));
  EXPECT_EQ(-1, getAdminState("running"));
  EXPECT_EQ(-1, getAdminState(""));
}

TEST(GetOperState, Words_AreComparedExactly) {
  EXPECT_EQ(7, getOperState("running"));
  EXPECT_EQ(3, getOperState("stopped"));
  EXPECT_EQ(-1, getOperState("Stopped"));
  EXPECT_EQ(-1, getOperState("stopped "));
  EXPECT_EQ(-1, getOperState("disable"));
  EXPECT_EQ(-1, getOperState("failed"));
  EXPECT_EQ(-1, getOperState(""));
}

TEST(NumberToString, BothTypes_AreDecimal) {
  EXPECT_EQ("0", NumberToString(0));
  EXPECT_EQ("-1", NumberToString(-1));
  EXPECT_EQ("-2147483648", NumberToString(-2147483647 - 1));
  EXPECT_EQ("1234567", NumberToString(1234567));
  EXPECT_EQ("4294967295", NumberToString(4294967295U));
}

// ----- The host key -----------------------------------------------------------------------------

class HostKey : public testing::Test {
 protected:
  HostKey() {
    char name[] = "/tmp/hostkeyXXXXXX";
    const int file = mkstemp(name);
    path_ = name;
    EXPECT_NE(-1, file);
    ::close(file);
    configure(path_);
  }

  ~HostKey() override { std::remove(path_.c_str()); }

  void configure(const std::string& path) {
    configured_.reset();
    configured_.emplace(std::vector<std::string>{"supervisor.host_key=" + path});
  }

  void write(const std::string& content) const {
    std::ofstream(path_, std::ios::binary | std::ios::trunc) << content;
  }

  LogCapture log_;
  std::string path_;
  std::optional<Configured> configured_;
};

TEST(HostKeyPath, NotConfigured_IsTheHostsOwn) {
  EXPECT_EQ(base::String("/etc/ssh/ssh_host_rsa_key.pub"),
            base::SvcConfigParams::getInstance().getHostKey());
}

TEST_F(HostKey, Files_YieldTheirLastLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"ssh-rsa AAAA root\n", "ssh-rsa AAAA root"},
      {"ssh-rsa AAAA root", "ssh-rsa AAAA root"},
      {"one\ntwo\nthree\n", "three"},
      {"one\ntwo\nthree", "three"},
      {"", ""},
      {"\n", ""},
      {"key\n\n", ""},
      {"key\r\n", "key\r"},
  };
  for (const auto& [content, last] : cases) {
    write(content);
    EXPECT_EQ(last, getZedPubKey()) << testing::PrintToString(content);
  }
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(HostKey, MissingFile_YieldsEmptyAndALine) {
  configure("/nonexistent/key.pub");
  EXPECT_EQ("", getZedPubKey());
  EXPECT_THAT(log_.lines(), ElementsAre(LogLine{1, "getZedPubKey",
                                                "Unable to Open file : /nonexistent/key.pub"}));
}

TEST_F(HostKey, Directory_YieldsEmpty) {
  configure("/tmp");
  EXPECT_EQ("", getZedPubKey());
}

// ----- Disk format progress ---------------------------------------------------------------------

TEST(WithoutCommandPrefix, FirstPoint_EndsThePrefix) {
  EXPECT_EQ(base::String("formatDisk"), withoutCommandPrefix("x.formatDisk"));
  EXPECT_EQ(base::String("b.formatDisk"), withoutCommandPrefix("a.b.formatDisk"));
  EXPECT_EQ(base::String("formatDisk"), withoutCommandPrefix("formatDisk"));
  EXPECT_EQ(base::String(""), withoutCommandPrefix("formatDisk."));
  EXPECT_EQ(base::String(""), withoutCommandPrefix(""));
}

std::string progressOf(const std::string& operCmd) {
  return "<commandProgressUpdateRequest><operCmd>" + operCmd +
         "</operCmd></commandProgressUpdateRequest>";
}

TEST(IsFormatStatusProgress, OtherKeys_AreNone) {
  EXPECT_FALSE(isFormatStatusProgress("heartbeat", progressOf("formatDisk")));
  EXPECT_FALSE(isFormatStatusProgress("commandProgress", progressOf("formatDisk")));
  EXPECT_FALSE(isFormatStatusProgress("commandProgress.Update", progressOf("formatDisk")));
  EXPECT_FALSE(isFormatStatusProgress("", progressOf("formatDisk")));
}

TEST(IsFormatStatusProgress, CommandWord_DecidesBehindItsPrefix) {
  const auto isOne = [](const char* operCmd) {
    return isFormatStatusProgress("commandProgress.update", progressOf(operCmd));
  };
  EXPECT_TRUE(isOne("formatDisk"));
  EXPECT_TRUE(isOne("app.formatDisk"));
  EXPECT_TRUE(isOne(".formatDisk"));
  EXPECT_FALSE(isOne("a.b.formatDisk"));
  EXPECT_FALSE(isOne("installApp"));
  EXPECT_FALSE(isOne("FormatDisk"));
  EXPECT_FALSE(isOne(" formatDisk "));
  EXPECT_FALSE(isOne("formatDisk."));
  EXPECT_FALSE(isOne(""));
}

TEST(IsFormatStatusProgress, OtherDocuments_AreNone) {
  const auto isOne = [](const std::string& document) {
    return isFormatStatusProgress("commandProgress.update", document);
  };
  EXPECT_FALSE(isOne(""));
  EXPECT_FALSE(isOne("<commandProgressUpdateRequest/>"));
  EXPECT_FALSE(
      isOne("<commandProgressRequest><operCmd>formatDisk</operCmd></commandProgressRequest>"));
  EXPECT_FALSE(isOne("<commandProgressUpdateRequest><operCmd>formatDisk"));
  EXPECT_FALSE(
      isOne("<commandProgressUpdateRequest><deep><operCmd>formatDisk</operCmd></deep>"
            "</commandProgressUpdateRequest>"));
  EXPECT_FALSE(isOne(std::string(2 * 1024 * 1024, '<')));
}

}  // namespace
}  // namespace zan_serviceOrchAG
