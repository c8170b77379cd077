#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "model/sm/AppInstanceMo.h"
#include "tests/dme/support/EngineClient.h"

namespace dme_test {

/// A gateway that does with commands what the test says, and the blades behind it.
class ScriptedGateway : public EngineClient {
 public:
  using EngineClient::EngineClient;

  /// A command that the engine asks for.
  struct Stage {
    std::uint32_t classId = 0;
    std::string cookie;
    std::string bytes;

    template <class Me>
    std::unique_ptr<Me> as() const {
      return method::decodeCall<Me>(reinterpret_cast<const unsigned char*>(bytes.data()),
                                    bytes.size());
    }
  };

  /// The commands so far, in their order; waits until there are this many.
  std::vector<Stage> waitForStages(std::size_t count) {
    return toStages(standIn_.waitForCalls(count));
  }
  std::vector<Stage> stages() { return toStages(standIn_.calls()); }
  /// The last of this many commands.
  Stage waitForStage(std::size_t count) { return waitForStages(count).at(count - 1); }

  void succeed(const Stage& stage) {
    base::OBioStream bytes;
    proc::writeSuccess(bytes, *headerOf(stage));
    send(textOf(bytes));
  }
  void fail(const Stage& stage, std::uint32_t code, const std::string& text = "it is told so") {
    send(textOf(method::encodeFailure(*headerOf(stage), {1, code, text})));
  }

  // The numbers that blades' reports carry.
  enum Command : std::uint8_t { kInstall = 1, kUninstall, kUpgrade, kStart, kStop };
  enum Status : std::uint8_t { kRunning = 1, kFailed, kSucceeded };
  void progress(const std::string& app, Command command, std::uint32_t percentage, Status status,
                std::uint32_t code = 0, const std::string& text = "") {
    call<serviceorchapi::UpdateProgressMe>({app, command, percentage, status, code, text});
  }
  /// 1 running, 2 succeeded, 3 failed.
  void formatStatus(std::uint32_t slot, std::uint8_t status) {
    call<serviceorchapi::UpdateDiskFormatStatusMe>({slot, status});
  }

  struct Reported {
    std::string app;
    std::uint8_t state = sm::kAppInactive;
    std::string version = "1.0";
  };
  void report(std::uint32_t slot, const std::vector<Reported>& instances) {
    method::ConfigSet set;
    for (const Reported& each : instances) {
      sm::AppInstanceMo instance;
      instance.set(sm::AppInstanceMo::kAppInstanceId, each.app);
      instance.set(sm::AppInstanceMo::kState, each.state);
      instance.set(sm::AppInstanceMo::kInstalledVersion, each.version);
      set.append(instance.toConfig());
    }
    call<serviceorchapi::ValidateAppInstancesMe>({slot, set});
  }

 private:
  static std::unique_ptr<proc::StimulusHeader> headerOf(const Stage& stage) {
    return method::readHeader(reinterpret_cast<const unsigned char*>(stage.bytes.data()),
                              stage.bytes.size());
  }
  static std::string textOf(const base::OBioStream& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }
  static std::vector<Stage> toStages(const std::vector<std::string>& calls) {
    std::vector<Stage> stages;
    for (const std::string& bytes : calls) {
      Stage stage{0, "", bytes};
      const auto header = headerOf(stage);
      stage.classId = header->classId();
      stage.cookie.assign(reinterpret_cast<const char*>(header->cookie().data()),
                          header->cookie().size());
      stages.push_back(stage);
    }
    return stages;
  }
};

}  // namespace dme_test
