#include "framework/base/SvcConfigParams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using base::SvcConfigParams;
using testing::HasSubstr;
using testing::MatchesRegex;
using namespace std::chrono_literals;

class SvcConfigParamsTest : public testing::Test {
 protected:
  void TearDown() override { config_.reset(); }

  // The error of a text that must not load, under the name "zedd.toml".
  std::string errorOf(std::string_view text, const std::vector<std::string>& overrides = {}) {
    const SvcConfigParams::Outcome outcome = config_.loadText(text, "zedd.toml", overrides);
    return outcome ? "(loaded)" : outcome.error();
  }

  // The error of one more line below a complete [supervisor] table.
  std::string errorOfLine(const std::string& line) {
    return errorOf("supervisor.state_dir = \"/s\"\n" + line);
  }

  std::string errorOfOverride(const std::string& text) {
    return errorOf("supervisor.state_dir = \"/s\"", {text});
  }

  SvcConfigParams& config_ = SvcConfigParams::getInstance(true);
};

TEST_F(SvcConfigParamsTest, Instance_IsTheSameForBothFlags) {
  EXPECT_EQ(&SvcConfigParams::getInstance(), &config_);
  EXPECT_EQ(&SvcConfigParams::getInstance(true), &config_);
}

TEST_F(SvcConfigParamsTest, NothingLoaded_HasTheDefaults) {
  EXPECT_EQ(config_.getSelfId(), 1);
  EXPECT_EQ(config_.getClusterName(), "chassis");
  EXPECT_EQ(config_.getPlatform(), "standard");
  EXPECT_FALSE(config_.isQvm1() || config_.isQvm2() || config_.isQvm3());
  EXPECT_EQ(config_.getStateDir(), "");
  EXPECT_EQ(config_.getHostKey(), "/etc/ssh/ssh_host_rsa_key.pub");
  EXPECT_EQ(config_.getLogLevel(), 5);
  EXPECT_EQ(config_.getLogFile(), "");
  EXPECT_EQ(config_.getServiceLibrary(), "libserviceOrchAG.so");
  EXPECT_EQ(config_.getDmeEndpoint(), "inproc://dme");
  EXPECT_EQ(config_.getDmeChassis(), "");
  EXPECT_EQ(config_.getDmeHeartbeatInterval(), 5s);
  EXPECT_EQ(config_.getDmeHeartbeatMisses(), 3u);
  EXPECT_EQ(config_.getDmeGrace(), 30s);
  EXPECT_EQ(config_.getMessageMaxBytes(), 1048576u);
  EXPECT_EQ(config_.getMessageMaxParts(), 16u);
  EXPECT_EQ(config_.getMessageReceiveHwm(), 1000);
  EXPECT_EQ(config_.getMessageMaxHandshakes(), 1024);
  EXPECT_EQ(config_.getMessageHandshake(), 2000ms);
  EXPECT_EQ(config_.getMessageHeartbeat(), 10000ms);
  EXPECT_EQ(config_.getXmlMaxDepth(), 64u);
  EXPECT_EQ(config_.getXmlMaxElements(), 16384u);
  EXPECT_EQ(config_.getXmlMaxBytes(), 1048576u);
  EXPECT_EQ(config_.getTftpAddress(), "127.128.254.1");
  EXPECT_EQ(config_.getAppAgAddress(), "127.128.254.1:5556");
  EXPECT_EQ(config_.getAppAgSecondAddress(), "127.128.1.254:5556");
  EXPECT_EQ(config_.getAppAgHeartbeatAddress(), "127.128.254.1:5559");
}

TEST_F(SvcConfigParamsTest, EveryKey_IsRead) {
  const SvcConfigParams::Outcome outcome = config_.loadText(R"(
[supervisor]
self_id = 2
cluster_name = "north"
platform = "qvm2"
state_dir = "/var/lib/x"
host_key = "/k"
[log]
level = 1
file = "/var/log/x"
[service]
library = "/lib/s.so"
[dme]
endpoint = "ipc:///run/dme"
chassis = "/etc/chassis.toml"
heartbeat_interval = 7
heartbeat_misses = 4
grace = 0
[message]
max_bytes = 2048
max_parts = 5
receive_hwm = 10
max_handshakes = 11
handshake_ms = 12
heartbeat_ms = 13
[xml]
max_depth = 14
max_elements = 15
max_bytes = 4096
[address]
tftp = "10.1.2.3"
app_ag = "10.1.2.4:5556"
app_ag_second = "10.1.2.5:5556"
app_ag_heartbeat = "10.1.2.4:5559"
)");
  ASSERT_TRUE(outcome) << outcome.error();
  EXPECT_EQ(config_.getSelfId(), 2);
  EXPECT_EQ(config_.getClusterName(), "north");
  EXPECT_EQ(config_.getPlatform(), "qvm2");
  EXPECT_EQ(config_.getStateDir(), "/var/lib/x");
  EXPECT_EQ(config_.getHostKey(), "/k");
  EXPECT_EQ(config_.getLogLevel(), 1);
  EXPECT_EQ(config_.getLogFile(), "/var/log/x");
  EXPECT_EQ(config_.getServiceLibrary(), "/lib/s.so");
  EXPECT_EQ(config_.getDmeEndpoint(), "ipc:///run/dme");
  EXPECT_EQ(config_.getDmeChassis(), "/etc/chassis.toml");
  EXPECT_EQ(config_.getDmeHeartbeatInterval(), 7s);
  EXPECT_EQ(config_.getDmeHeartbeatMisses(), 4u);
  EXPECT_EQ(config_.getDmeGrace(), 0s);
  EXPECT_EQ(config_.getMessageMaxBytes(), 2048u);
  EXPECT_EQ(config_.getMessageMaxParts(), 5u);
  EXPECT_EQ(config_.getMessageReceiveHwm(), 10);
  EXPECT_EQ(config_.getMessageMaxHandshakes(), 11);
  EXPECT_EQ(config_.getMessageHandshake(), 12ms);
  EXPECT_EQ(config_.getMessageHeartbeat(), 13ms);
  EXPECT_EQ(config_.getXmlMaxDepth(), 14u);
  EXPECT_EQ(config_.getXmlMaxElements(), 15u);
  EXPECT_EQ(config_.getXmlMaxBytes(), 4096u);
  EXPECT_EQ(config_.getTftpAddress(), "10.1.2.3");
  EXPECT_EQ(config_.getAppAgAddress(), "10.1.2.4:5556");
  EXPECT_EQ(config_.getAppAgSecondAddress(), "10.1.2.5:5556");
  EXPECT_EQ(config_.getAppAgHeartbeatAddress(), "10.1.2.4:5559");
}

TEST_F(SvcConfigParamsTest, Platform_SetsOneQuery) {
  const auto load = [this](const char* platform) {
    const SvcConfigParams::Outcome outcome =
        config_.loadText("supervisor.state_dir = '/s'", "zedd.toml",
                         std::vector<std::string>{std::string("supervisor.platform=") + platform});
    ASSERT_TRUE(outcome) << outcome.error();
  };
  load("qvm1");
  EXPECT_TRUE(config_.isQvm1() && !config_.isQvm2() && !config_.isQvm3());
  load("qvm2");
  EXPECT_TRUE(!config_.isQvm1() && config_.isQvm2() && !config_.isQvm3());
  load("qvm3");
  EXPECT_TRUE(!config_.isQvm1() && !config_.isQvm2() && config_.isQvm3());
  load("standard");
  EXPECT_FALSE(config_.isQvm1() || config_.isQvm2() || config_.isQvm3());
}

TEST_F(SvcConfigParamsTest, UnknownKey_NamesLineAndNearestKey) {
  EXPECT_EQ(errorOf("[supervisor]\nstate_dir = \"/s\"\nself_idd = 1\n"),
            "zedd.toml:3: unknown key 'supervisor.self_idd'; did you mean 'supervisor.self_id'?");
}

TEST_F(SvcConfigParamsTest, KeyInTheWrongTable_NamesTheRightOne) {
  EXPECT_EQ(errorOfLine("self_id = 1"),
            "zedd.toml:2: unknown key 'self_id'; did you mean 'supervisor.self_id'?");
  EXPECT_EQ(errorOfLine("message.level = 1"),
            "zedd.toml:2: unknown key 'message.level'; did you mean 'log.level'?");
  EXPECT_EQ(errorOfLine("logs.level = 1"),
            "zedd.toml:2: unknown key 'logs.level'; did you mean 'log.level'?");
}

TEST_F(SvcConfigParamsTest, UnknownKeyFarFromAll_NamesNoOther) {
  EXPECT_EQ(errorOfLine("telephone_number = 1"), "zedd.toml:2: unknown key 'telephone_number'");
  const std::string longName(100000, 'x');
  EXPECT_EQ(errorOfLine(longName + " = 1"), "zedd.toml:2: unknown key '" + longName + "'");
}

TEST_F(SvcConfigParamsTest, UnknownTable_IsAnError) {
  EXPECT_EQ(errorOfLine("[telephone]"), "zedd.toml:2: unknown key 'telephone'");
  EXPECT_EQ(errorOfLine("[log]"), "(loaded)");
}

TEST_F(SvcConfigParamsTest, QuotedKeyWithAPoint_IsNotTheDottedOne) {
  EXPECT_EQ(errorOfLine("\"log.level\" = 3"),
            "zedd.toml:2: unknown key '\"log.level\"'; did you mean 'log.level'?");
}

TEST_F(SvcConfigParamsTest, KeyWithControlCharacters_StaysOnOneLine) {
  EXPECT_EQ(errorOfLine("\"a\\n\\u001b[31m\" = 3"),
            "zedd.toml:2: unknown key '\"a\\x0a\\x1b[31m\"'");
}

TEST_F(SvcConfigParamsTest, SeveralMistakes_TopmostIsReported) {
  EXPECT_EQ(errorOf("[supervisor]\nstate_dir = \"/s\"\n[log]\nlevel = 99\n[dme]\ngrace = -1\n"),
            "zedd.toml:4: 'log.level' must be a number from 0 to 8, not 99");
}

TEST_F(SvcConfigParamsTest, NumberOutOfRange_NamesTheRange) {
  EXPECT_EQ(errorOfLine("log.level = 9"),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not 9");
  EXPECT_EQ(errorOfLine("log.level = -1"),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not -1");
  EXPECT_EQ(errorOfLine("dme.heartbeat_interval = 0"),
            "zedd.toml:2: 'dme.heartbeat_interval' must be a number of seconds from 1 to 3600, "
            "not 0");
  EXPECT_EQ(errorOfLine("dme.heartbeat_interval = 3601"),
            "zedd.toml:2: 'dme.heartbeat_interval' must be a number of seconds from 1 to 3600, "
            "not 3601");
  EXPECT_EQ(errorOfLine("message.max_parts = 4"),
            "zedd.toml:2: 'message.max_parts' must be a number of parts from 5 to 1024, not 4");
}

TEST_F(SvcConfigParamsTest, RangeLimits_AreAccepted) {
  EXPECT_EQ(errorOfLine("log.level = 0"), "(loaded)");
  EXPECT_EQ(errorOfLine("log.level = 8"), "(loaded)");
  EXPECT_EQ(errorOfLine("dme.heartbeat_interval = 3600"), "(loaded)");
}

TEST_F(SvcConfigParamsTest, WrongType_NamesWhatWasThere) {
  EXPECT_EQ(errorOfLine("log.level = \"high\""),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not 'high'");
  EXPECT_EQ(errorOfLine("log.level = \"3\""),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not '3'");
  EXPECT_EQ(errorOfLine("log.level = 3.0"),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not a number with a fraction");
  EXPECT_EQ(errorOfLine("log.level = true"),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not a truth value");
  EXPECT_EQ(errorOfLine("log.level = [3]"),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not a list");
  EXPECT_EQ(errorOfLine("log.level = 2026-01-01"),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not a date or time");
  EXPECT_EQ(errorOfLine("log.level = {}"),
            "zedd.toml:2: 'log.level' must be a number from 0 to 8, not a table");
  EXPECT_EQ(errorOfLine("log.file = 3"), "zedd.toml:2: 'log.file' must be a path, not 3");
  EXPECT_EQ(errorOfLine("log = 3"), "zedd.toml:2: unknown key 'log'");
}

TEST_F(SvcConfigParamsTest, UnknownChoice_NamesAllChoices) {
  EXPECT_EQ(errorOfLine("supervisor.platform = \"qvm4\""),
            "zedd.toml:2: 'supervisor.platform' must be one of standard, qvm1, qvm2, qvm3, "
            "not 'qvm4'");
  EXPECT_EQ(errorOfLine("supervisor.platform = \"QVM1\""),
            "zedd.toml:2: 'supervisor.platform' must be one of standard, qvm1, qvm2, qvm3, "
            "not 'QVM1'");
}

TEST_F(SvcConfigParamsTest, Endpoint_MustHaveAKnownTransport) {
  EXPECT_EQ(errorOfLine("dme.endpoint = \"tcp://127.0.0.1:7000\""), "(loaded)");
  for (const char* endpoint : {"", "dme", "udp://x", "inproc://", "ipc://", "tcp:/x", " tcp://x"}) {
    EXPECT_EQ(errorOfLine("dme.endpoint = \"" + std::string(endpoint) + "\""),
              "zedd.toml:2: 'dme.endpoint' must be an end point that begins with inproc://, "
              "ipc:// or tcp://, not '" +
                  std::string(endpoint) + "'");
  }
}

TEST_F(SvcConfigParamsTest, TftpAddress_MustBeInternal) {
  for (const char* address : {"127.0.0.1", "10.0.0.1", "172.16.0.1", "172.31.255.255",
                              "192.168.1.1", "100.64.0.1", "169.254.1.1"}) {
    EXPECT_EQ(errorOfLine("address.tftp = \"" + std::string(address) + "\""), "(loaded)");
  }
  for (const char* address :
       {"", "8.8.8.8", "172.32.0.1", "172.15.255.255", "192.169.0.1", "100.128.0.1", "128.0.0.1",
        "11.0.0.1", "127.0.0.1:69", "127.1", "::1", "host", "256.0.0.1", "10.0.0.1 "}) {
    EXPECT_EQ(errorOfLine("address.tftp = \"" + std::string(address) + "\""),
              "zedd.toml:2: 'address.tftp' must be an internal IPv4 address, not '" +
                  std::string(address) + "'");
  }
  EXPECT_EQ(errorOfLine("address.tftp = \"10.0.0.1\\u0000x\""),
            "zedd.toml:2: 'address.tftp' must be an internal IPv4 address, not '10.0.0.1\\x00x'");
}

TEST_F(SvcConfigParamsTest, GatewayAddress_IsInternalWithItsPort) {
  const struct {
    const char* key;
    const char* port;
  } rows[] = {{"address.app_ag", "5556"},
              {"address.app_ag_second", "5556"},
              {"address.app_ag_heartbeat", "5559"}};
  for (const auto& row : rows) {
    for (const char* address :
         {"", "127.0.0.1", "127.0.0.1:", "127.0.0.1:5557", "127.0.0.1:05556", "127.0.0.1:5556x",
          "127.0.0.1: 5559", "8.8.8.8:5556", "8.8.8.8:5559", ":5556", ":5559", "host:5556"}) {
      EXPECT_EQ(errorOfLine(std::string(row.key) + " = \"" + address + "\""),
                "zedd.toml:2: '" + std::string(row.key) +
                    "' must be an internal IPv4 address with the port " + row.port + ", not '" +
                    address + "'");
    }
  }
}

TEST_F(SvcConfigParamsTest, GatewayAddresses_HeartbeatsGoToTheFirst_TheSecondIsAnother) {
  EXPECT_EQ(errorOfLine("address.app_ag = \"10.0.0.1:5556\""),
            "zedd.toml: 'address.app_ag_heartbeat' must have the address of 'address.app_ag', "
            "'10.0.0.1', not '127.128.254.1'");
  EXPECT_EQ(errorOfLine("address.app_ag_second = \"127.128.254.1:5556\""),
            "zedd.toml: 'address.app_ag_second' must have another address than 'address.app_ag', "
            "not '127.128.254.1'");
}

TEST_F(SvcConfigParamsTest, NameWithALineEnd_IsRefused) {
  EXPECT_EQ(errorOfLine("supervisor.cluster_name = \"a\\nb\""),
            "zedd.toml:2: 'supervisor.cluster_name' must be a text without control characters, "
            "not 'a\\x0ab'");
}

TEST_F(SvcConfigParamsTest, StateDir_IsRequired) {
  EXPECT_EQ(errorOf(""), "zedd.toml: key 'supervisor.state_dir' is missing");
  EXPECT_EQ(errorOf("log.level = 3"), "zedd.toml: key 'supervisor.state_dir' is missing");
  EXPECT_EQ(errorOf("supervisor.state_dir = \"\""),
            "zedd.toml:1: 'supervisor.state_dir' must be a path, not ''");
  EXPECT_EQ(errorOf("", {"supervisor.state_dir=/s"}), "(loaded)");
}

TEST_F(SvcConfigParamsTest, BrokenText_NamesTheLine) {
  EXPECT_THAT(errorOf("[supervisor]\nstate_dir = \n"), MatchesRegex("zedd\\.toml:2: [^\n]+"));
  EXPECT_THAT(errorOf("[supervisor\n"), MatchesRegex("zedd\\.toml:1: [^\n]+"));
  EXPECT_THAT(errorOf("log.level = 3\nlog.level = 4\n"), MatchesRegex("zedd\\.toml:2: [^\n]+"));
  EXPECT_THAT(errorOf("log.file = \"\xff\""), MatchesRegex("zedd\\.toml:1: [^\n]+"));
  EXPECT_THAT(errorOf(std::string_view("a\0b", 3)), MatchesRegex("zedd\\.toml:1: [^\n]+"));
  EXPECT_THAT(errorOf("log.level = " + std::string(100000, '[')),
              MatchesRegex("zedd\\.toml:1: [^\n]+"));
}

TEST_F(SvcConfigParamsTest, Override_WinsOverTheFile) {
  const std::vector<std::string> overrides = {"log.level=2", "supervisor.cluster_name=a=b",
                                              "log.file=", "log.level=7"};
  const SvcConfigParams::Outcome outcome = config_.loadText(
      "supervisor.state_dir = '/s'\nlog.level = 1\nlog.file = '/f'", "zedd.toml", overrides);
  ASSERT_TRUE(outcome) << outcome.error();
  EXPECT_EQ(config_.getLogLevel(), 7) << "the last one counts";
  EXPECT_EQ(config_.getClusterName(), "a=b");
  EXPECT_EQ(config_.getLogFile(), "");
}

TEST_F(SvcConfigParamsTest, WrongOverride_NamesItAndTheCause) {
  EXPECT_EQ(errorOfOverride("log.level"), "override 'log.level': not of the form KEY=VALUE");
  EXPECT_EQ(errorOfOverride(""), "override '': not of the form KEY=VALUE");
  EXPECT_EQ(errorOfOverride("log.leve=3"),
            "override 'log.leve=3': unknown key 'log.leve'; did you mean 'log.level'?");
  EXPECT_EQ(errorOfOverride("log.level=9"),
            "override 'log.level=9': 'log.level' must be a number from 0 to 8, not 9");
  for (const char* value : {"", " 3", "3 ", "3x", "+3", "0x3", "3.0", "99999999999999999999"}) {
    EXPECT_EQ(errorOfOverride("log.level=" + std::string(value)),
              "override 'log.level=" + std::string(value) +
                  "': 'log.level' must be a number from 0 to 8, not '" + value + "'");
  }
}

TEST_F(SvcConfigParamsTest, FailedLoad_LeavesTheConfiguration) {
  ASSERT_TRUE(config_.loadText("supervisor.state_dir = '/s'\nsupervisor.self_id = 2"));
  EXPECT_FALSE(config_.loadText("supervisor.state_dir = '/t'\nlog.level = 9"));
  EXPECT_EQ(config_.getStateDir(), "/s");
  EXPECT_EQ(config_.getSelfId(), 2);
}

TEST_F(SvcConfigParamsTest, SecondLoad_StartsFromTheDefaults) {
  ASSERT_TRUE(config_.loadText("supervisor.state_dir = '/s'\nsupervisor.self_id = 2"));
  ASSERT_TRUE(config_.loadText("supervisor.state_dir = '/t'"));
  EXPECT_EQ(config_.getSelfId(), 1);
  EXPECT_EQ(config_.getStateDir(), "/t");
}

TEST_F(SvcConfigParamsTest, Help_ListsEveryKeyOnce) {
  const std::string help = SvcConfigParams::help();
  for (const char* key : {"supervisor.self_id",
                          "supervisor.cluster_name",
                          "supervisor.platform",
                          "supervisor.state_dir",
                          "supervisor.host_key",
                          "log.level",
                          "log.file",
                          "service.library",
                          "dme.endpoint",
                          "dme.chassis",
                          "dme.heartbeat_interval",
                          "dme.heartbeat_misses",
                          "dme.grace",
                          "dme.settle_after",
                          "message.max_bytes",
                          "message.max_parts",
                          "message.receive_hwm",
                          "message.max_handshakes",
                          "message.handshake_ms",
                          "message.heartbeat_ms",
                          "xml.max_depth",
                          "xml.max_elements",
                          "xml.max_bytes",
                          "address.tftp",
                          "address.app_ag",
                          "address.app_ag_second",
                          "address.app_ag_heartbeat"}) {
    const std::string line = '\n' + std::string(key) + '\n';
    const std::size_t first = ('\n' + help).find(line);
    ASSERT_NE(first, std::string::npos) << key;
    EXPECT_EQ(('\n' + help).find(line, first + 1), std::string::npos) << key;
  }
  EXPECT_THAT(help, HasSubstr("log.level\n"
                              "    Lines of this level and above are written; 8 is the gravest. "
                              "Read again on reload.\n"
                              "    a number from 0 to 8; default 5\n"));
  EXPECT_THAT(help, HasSubstr("one of standard, qvm1, qvm2, qvm3; default \"standard\"\n"));
  EXPECT_THAT(help, HasSubstr("    a path; required\n"));
}

// Files in a directory of this test's own.
class SvcConfigParamsFileTest : public SvcConfigParamsTest {
 protected:
  void SetUp() override {
    std::string pattern = testing::TempDir() + "configXXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory_ = pattern;
    path_ = directory_ + "/zedd.toml";
  }

  void TearDown() override {
    unlink(path_.c_str());
    rmdir(directory_.c_str());
    SvcConfigParamsTest::TearDown();
  }

  void write(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }

  std::string errorOfFile() {
    const SvcConfigParams::Outcome outcome = config_.load(path_);
    return outcome ? "(loaded)" : outcome.error();
  }

  std::string directory_;
  std::string path_;
};

TEST_F(SvcConfigParamsFileTest, File_IsReadWithOverrides) {
  write("[supervisor]\nstate_dir = \"/s\"\nself_id = 2\n");
  ASSERT_TRUE(config_.load(path_, std::vector<std::string>{"log.level=1"}));
  EXPECT_EQ(config_.getSelfId(), 2);
  EXPECT_EQ(config_.getLogLevel(), 1);
}

TEST_F(SvcConfigParamsFileTest, Mistake_NamesTheFileAsGiven) {
  write("[supervisor]\nstate_dir = \"/s\"\nself_idd = 2\n");
  EXPECT_EQ(errorOfFile(), path_ +
                               ":3: unknown key 'supervisor.self_idd'; did you mean "
                               "'supervisor.self_id'?");
}

TEST_F(SvcConfigParamsFileTest, MissingFile_NamesTheCause) {
  EXPECT_EQ(errorOfFile(), path_ + ": cannot be read: No such file or directory");
}

TEST_F(SvcConfigParamsFileTest, Directory_NamesTheCause) {
  const SvcConfigParams::Outcome outcome = config_.load(directory_);
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error(), directory_ + ": cannot be read: Is a directory");
}

TEST_F(SvcConfigParamsFileTest, HugeFile_IsRefused) {
  write("supervisor.state_dir = '/s'\n" + std::string(1048576, '#'));
  EXPECT_EQ(errorOfFile(), path_ + ": cannot be read: larger than 1048576 bytes");
}

TEST_F(SvcConfigParamsFileTest, RereadLogLevel_ChangesNothingElse) {
  write("supervisor.state_dir = '/s'\nlog.level = 5\n");
  ASSERT_TRUE(config_.load(path_));
  write("supervisor.state_dir = '/t'\nlog.level = 2\n");
  const auto level = SvcConfigParams::rereadLogLevel(path_);
  ASSERT_TRUE(level) << level.error();
  EXPECT_EQ(*level, 2);
  EXPECT_EQ(config_.getStateDir(), "/s");
  EXPECT_EQ(config_.getLogLevel(), 5);
}

TEST_F(SvcConfigParamsFileTest, RereadLogLevel_HonoursOverridesAndReportsMistakes) {
  write("supervisor.state_dir = '/s'\nlog.level = 2\n");
  EXPECT_EQ(SvcConfigParams::rereadLogLevel(path_, std::vector<std::string>{"log.level=7"}), 7);
  write("supervisor.state_dir = '/s'\nlog.level = 9\n");
  const auto level = SvcConfigParams::rereadLogLevel(path_);
  ASSERT_FALSE(level);
  EXPECT_EQ(level.error(), path_ + ":2: 'log.level' must be a number from 0 to 8, not 9");
}

}  // namespace
