#include <algorithm>

#include "framework/method/Config.h"
#include "framework/mo/Mo.h"
#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/ReplyChecks.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"

// A platform report's document, under every answer of the engine: whatever the report holds or
// lacks, the engine gets one platform and one list of application instances.

namespace fuzz {
namespace {

using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::ValidateAppInstancesMe;

/// The status that the engine's manner leads to.
unsigned expectedStatus(Manner manner) {
  if (saysNo(manner)) {
    return 508;
  }
  return manner == Manner::kSilent ? 506 : 100;
}

/// Fails unless the configuration is one of the class T, with properties of the class only.
template <class T>
void checkObject(const method::Config& config) {
  constexpr std::uint32_t kReportFlags = 0x2000;
  T object;
  check(config.classId() == T::kClassId, "an object is of its class", T::kName);
  check(mo::fromConfig(config, object) == 0, "an object has properties of its class", T::kName);
  check(config.flags() == kReportFlags && config.children().empty(), "an object travels alone",
        T::kName);
}

template <class T>
void checkObjects(const method::ConfigSet& set) {
  for (const method::Config& config : set.configs()) {
    checkObject<T>(config);
  }
}

std::size_t applicationsIn(const std::string& document) {
  noxxml::XMLConverter converter;
  const noxxml::AgElement* const root = converter.xmlDeserialize(document);
  return root == nullptr ? 0 : root->xmlFindAllElementsCb("application").size();
}

void checkReport(const EngineStandIn& engine, const std::string& document) {
  const auto platform = engine.onlyCall<UpdatePlatformInfoMe>();
  const auto instances = engine.onlyCall<ValidateAppInstancesMe>();
  check(platform && instances && engine.calls() == 2, "the engine gets both parts", document);
  check(std::get<0>(*platform) == Gateway::kSlot && std::get<0>(*instances) == Gateway::kSlot,
        "the engine gets the blade's own slot", document);
  checkObject<sm::MonitorMo>(std::get<1>(*platform));
  checkObjects<sm::DiskFileSystemMo>(std::get<2>(*platform));
  checkObjects<sm::AppInstanceMo>(std::get<1>(*instances));
  check(std::get<1>(*instances).size() == applicationsIn(document),
        "the engine gets every application", document);
}

}  // namespace

void runPlatformInfo(Input input) {
  const Manner manner = takeManner(input);
  Gateway gateway(manner);
  const std::string document = textOf(input);
  const auto response = gateway.handle(&MsgHandler::AG_platformInfoUpdateReqCb, document, "update");
  if (gateway.hasDropped()) {
    return;
  }
  check(response != nullptr, "a report is answered", document);
  checkReply(*response, "platformInfoUpdate", {expectedStatus(manner)});
  checkReport(gateway.engine(), document);
}

}  // namespace fuzz
