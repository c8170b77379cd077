#include "framework/base/SvcConfigParams.h"
#include "framework/core_utils/Numbers.h"
#include "model/sd/ResourceMo.h"
#include "serviceOrchAG/executors/ApplicationPackage.h"
#include "serviceOrchAG/executors/StartDocument.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using Resource = sd::ResourceMo;

// The version of the document's own header. Blades know no other.
constexpr const char* kHeaderVersion = "1";

/// As decimal text; empty when it is not set.
base::String textOf(const Resource* resource, const mo::Property<std::uint32_t>& property) {
  return resource != nullptr && resource->find(property.id) != nullptr
             ? core_utils::uintToString(resource->get(property))
             : base::String();
}

/// On the platforms whose blades have a second data disk.
bool addSecondDataDisk(StartDocument& start, const base::String& size) {
  const auto& platform = base::SvcConfigParams::getInstance();
  if (size.empty() || !(platform.isQvm3() || platform.isQvm2())) {
    return true;
  }
  return start.addRequired({names().reqSecDataHdd, size, MissingLine::kInstanceFirst,
                            "STARTAPP:: create <reqSecDataHdd> fails."}) != nullptr;
}

}  // namespace

bool addResources(StartDocument& start) {
  if (start.addRequired({names().hdrVersion, kHeaderVersion, MissingLine::kForInstance,
                         "STARTAPP:: hdrVersion is missing."}) == nullptr ||
      start.addRequired({names().appInstanceId, start.id(), MissingLine::kSlot,
                         "STARTAPP:: appInstanceId is missing."}) == nullptr) {
    return false;
  }
  start.addOptional(names().installType, getDeployType(start.app()), start.root());
  const Resource* const resource = start.instance().resolveSdResource();
  return start.addRequired({names().reqCpuCores, textOf(resource, Resource::kReqCpuCores),
                            MissingLine::kInstanceFirst,
                            "STARTAPP:: reqCpuCores core is missing."}) != nullptr &&
         start.addRequired({names().maxAllowedRam, textOf(resource, Resource::kMaxAllowedRam),
                            MissingLine::kInstanceFirst, "STARTAPP:: maxAllowedRam is missing."}) !=
             nullptr &&
         start.addRequired({names().reqDataHdd, textOf(resource, Resource::kReqDataHdd),
                            MissingLine::kInstanceFirst, "STARTAPP:: reqDataHdd is missing."}) !=
             nullptr &&
         addSecondDataDisk(start, textOf(resource, Resource::kReqSecDataHdd));
}

}  // namespace zan_serviceOrchAG
