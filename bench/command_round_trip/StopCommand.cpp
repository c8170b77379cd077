#include "bench/command_round_trip/StopCommand.h"

#include <stdexcept>

#include "framework/base/String.h"
#include "framework/filter/Filter.h"
#include "framework/method/Config.h"
#include "framework/proc/Answer.h"
#include "framework/proc/MethodTable.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/JobMo.h"
#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/svc/Registration.h"

namespace command_round_trip {
namespace {

using Stage = zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe;

std::string appOf(std::uint32_t slot) {
  return "slot" + std::to_string(slot) + "-app1";
}

method::Config instance(std::uint32_t slot) {
  using sd::AppInstanceMo;
  const mo::Dn name("sys/chassis-1/slot-" + std::to_string(slot) + "/app-" + appOf(slot));
  method::Config config(AppInstanceMo::kClassId, name);
  config.set(AppInstanceMo::kAppInstanceId.id, method::Value(base::String(appOf(slot))));
  config.set(AppInstanceMo::kSlotId.id, method::Value(slot));
  config.set(AppInstanceMo::kJobType.id,
             method::Value(static_cast<std::uint8_t>(sd::JobType::kStop)));
  return config;
}

}  // namespace

void startService() {
  filter::Filter::initFactories();
  zan_serviceOrchAG::registerCallbacks();
}

std::vector<std::string> stopCommandParts(std::uint32_t slot) {
  namespace envelope = zan_serviceOrchAG::envelope;
  std::vector<std::string> parts(envelope::kPartCount);
  parts[envelope::kSubject] = envelope::kSlotIdentity + std::to_string(slot) + ".stopApp";
  parts[envelope::kContent] = envelope::contentTypeAndVersion();
  parts[envelope::kMessageId] = "12345";
  parts[envelope::kIdentity] = envelope::kOwnIdentity;
  parts[envelope::kBody] =
      "<stopAppRequest><appInstanceId>" + appOf(slot) + "</appInstanceId></stopAppRequest>";
  return parts;
}

StopCommand::StopCommand(std::uint32_t slot, unsigned port) : slot_(std::to_string(slot)) {
  Stage stage;
  stage.in = {0, 0, mo::Dn(), 0, instance(slot)};
  stage.encode(stage_);
  zan_serviceOrchAG::createSMAClient(slot_, "127.0.0.1", std::to_string(port), true);
}

StopCommand::~StopCommand() {
  zan_serviceOrchAG::removeBladeMapEntry(slot_);
}

bool StopCommand::exchange() {
  bool hasSucceeded = false;
  proc::InboundCall call(stage_.data(), stage_.size(), [&](base::OBioStream&& bytes) {
    base::IBioStream stream(bytes.data(), bytes.size());
    proc::StimulusHeader header;
    proc::Outcome outcome{};
    proc::Stimulus::Failure failure;
    hasSucceeded = header.deserialize(stream) && proc::readOutcome(stream, outcome, failure) &&
                   outcome == proc::Outcome::kSuccess;
  });
  const proc::MethodHandler* const handler = proc::MethodTable::instance().find(Stage::kClassId);
  return handler != nullptr && handler->execute(call) && hasSucceeded;
}

}  // namespace command_round_trip
