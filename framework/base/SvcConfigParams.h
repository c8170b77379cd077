#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

#include "framework/base/ConfigValues.h"
#include "framework/base/String.h"

namespace base {

// What the supervisor is configured to be, for everything that runs in its process. The text is
// TOML; the keys are those that help() lists.
//
// Loading happens before other threads read: at start-up, and in tests. After that the values
// do not change and every getter may be called from any thread.
class SvcConfigParams {
 public:
  // Success, or one line that names the source (with the line, where there is one), the key,
  // the cause and, for an unknown key, the one that was probably meant:
  //   zedd.toml:3: unknown key 'supervisor.self_idd'; did you mean 'supervisor.self_id'?
  using Outcome = tl::expected<void, std::string>;

  // The one instance; it always exists and holds the defaults until something is loaded. The
  // flag marks the call of a start-up sequence and changes nothing.
  static SvcConfigParams& getInstance(bool create = false);

  // Reads the file and then the overrides, each KEY=VALUE, a later one before an earlier one,
  // all before the file. On an error the configuration stays as it was. Blocks on the disk.
  Outcome load(const std::string& path, std::span<const std::string> overrides = {});
  // The same of a text in hand; `name` stands for the path in messages.
  Outcome loadText(std::string_view text, std::string_view name = "(text)",
                   std::span<const std::string> overrides = {});
  // Back to the defaults, as if nothing had been loaded. For tests.
  void reset();

  // Reads the whole file again, as load() would, and gives the log level that it asks for; this
  // is the only value that may change while the process runs. The configuration itself, and
  // getLogLevel(), stay as they were loaded. Blocks on the disk; may be called from any thread.
  static tl::expected<int, std::string> rereadLogLevel(const std::string& path,
                                                       std::span<const std::string> overrides = {});

  // Every key with its meaning, its possible values and its default.
  static std::string help();

  int getSelfId() const { return static_cast<int>(values_.selfId); }
  String getClusterName() const { return values_.clusterName; }
  // Chassis models; on a standard chassis all three are false.
  bool isQvm1() const { return values_.platform == "qvm1"; }
  bool isQvm2() const { return values_.platform == "qvm2"; }
  bool isQvm3() const { return values_.platform == "qvm3"; }
  String getPlatform() const { return values_.platform; }
  // Empty until a configuration has been loaded, never after.
  String getStateDir() const { return values_.stateDir; }
  String getHostKey() const { return values_.hostKey; }

  int getLogLevel() const { return static_cast<int>(values_.logLevel); }
  // Empty for standard error.
  String getLogFile() const { return values_.logFile; }

  String getServiceLibrary() const { return values_.serviceLibrary; }

  String getDmeEndpoint() const { return values_.dmeEndpoint; }
  // Empty for none.
  String getDmeChassis() const { return values_.dmeChassis; }
  std::chrono::seconds getDmeHeartbeatInterval() const {
    return std::chrono::seconds(values_.dmeHeartbeatInterval);
  }
  unsigned getDmeHeartbeatMisses() const {
    return static_cast<unsigned>(values_.dmeHeartbeatMisses);
  }
  std::chrono::seconds getDmeGrace() const { return std::chrono::seconds(values_.dmeGrace); }
  std::chrono::seconds getDmeSettleAfter() const {
    return std::chrono::seconds(values_.dmeSettleAfter);
  }

  std::size_t getMessageMaxBytes() const {
    return static_cast<std::size_t>(values_.messageMaxBytes);
  }
  unsigned getMessageMaxParts() const { return static_cast<unsigned>(values_.messageMaxParts); }
  int getMessageReceiveHwm() const { return static_cast<int>(values_.messageReceiveHwm); }
  int getMessageMaxHandshakes() const { return static_cast<int>(values_.messageMaxHandshakes); }
  std::chrono::milliseconds getMessageHandshake() const {
    return std::chrono::milliseconds(values_.messageHandshakeMs);
  }
  std::chrono::milliseconds getMessageHeartbeat() const {
    return std::chrono::milliseconds(values_.messageHeartbeatMs);
  }

  unsigned getXmlMaxDepth() const { return static_cast<unsigned>(values_.xmlMaxDepth); }
  std::size_t getXmlMaxElements() const { return static_cast<std::size_t>(values_.xmlMaxElements); }
  std::size_t getXmlMaxBytes() const { return static_cast<std::size_t>(values_.xmlMaxBytes); }

  // A dotted IPv4 address without a port.
  String getTftpAddress() const { return values_.tftpAddress; }
  // Each a dotted IPv4 address, a colon and a port.
  String getAppAgAddress() const { return values_.appAgAddress; }
  String getAppAgSecondAddress() const { return values_.appAgSecondAddress; }
  String getAppAgHeartbeatAddress() const { return values_.appAgHeartbeatAddress; }

 private:
  SvcConfigParams() = default;

  ConfigValues values_;
};

}  // namespace base
