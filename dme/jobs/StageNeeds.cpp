#include "dme/jobs/StageNeeds.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <variant>

#include "dme/apps/InstanceSnapshot.h"
#include "dme/base/Text.h"
#include "model/AllClasses.h"

namespace dme {

namespace {

using sd::ExternalLduLinkMo;

struct Need {
  JobVerb verb;
  std::uint32_t classId;
  std::uint32_t propertyId;
  std::string_view field;
};

constexpr std::uint32_t kInstance = sd::AppInstanceMo::kClassId;
constexpr std::uint32_t kApp = sm::AppMo::kClassId;
constexpr std::uint32_t kResource = sd::ResourceMo::kClassId;

// Each stands for a required element of the command; 0 is as good as nothing.
constexpr std::array kNeeds{
    Need{JobVerb::kInstall, kApp, sm::AppMo::kPackageFile.id, "app.packageFile"},
    Need{JobVerb::kInstall, kApp, sm::AppMo::kReqDataHdd.id, "app.reqDataHdd"},
    Need{JobVerb::kInstall, kApp, sm::AppMo::kDeployType.id, "app.deployType"},
    Need{JobVerb::kInstall, kApp, sm::AppMo::kInstallTimeout.id, "app.installTimeout"},
    Need{JobVerb::kInstall, kApp, sm::AppMo::kUninstallTimeout.id, "app.uninstallTimeout"},
    Need{JobVerb::kUpgrade, kApp, sm::AppMo::kReqDataHdd.id, "app.reqDataHdd"},
    Need{JobVerb::kUpgrade, kApp, sm::AppMo::kUpgradeTimeout.id, "app.upgradeTimeout"},
    Need{JobVerb::kStart, kApp, sm::AppMo::kDeployType.id, "app.deployType"},
    Need{JobVerb::kStart, kResource, sd::ResourceMo::kReqCpuCores.id, "resource.reqCpuCores"},
    Need{JobVerb::kStart, kResource, sd::ResourceMo::kMaxAllowedRam.id, "resource.maxAllowedRam"},
    Need{JobVerb::kStart, kResource, sd::ResourceMo::kReqDataHdd.id, "resource.reqDataHdd"},
    Need{JobVerb::kStart, kInstance, sd::AppInstanceMo::kMgmtBootstrapVersion.id,
         "mgmtBootstrapVersion"},
    Need{JobVerb::kStart, sd::ChassisMo::kClassId, sd::ChassisMo::kSerial.id, "chassis.serial"},
};

template <class T>
T valueOf(const method::Config& config, const mo::Property<T>& property) {
  const method::Value* const value = config.find(property.id);
  const T* const content = value != nullptr ? std::get_if<T>(value) : nullptr;
  return content != nullptr ? *content : T();
}

bool isGiven(const method::Config* config, std::uint32_t propertyId) {
  const method::Value* const value = config != nullptr ? config->find(propertyId) : nullptr;
  return value != nullptr && std::visit(
                                 [](const auto& content) {
                                   using T = std::decay_t<decltype(content)>;
                                   if constexpr (std::is_same_v<T, base::String>) {
                                     return !standsForNothing(content.view());
                                   } else if constexpr (std::is_same_v<T, std::monostate>) {
                                     return false;
                                   } else {
                                     return content != T();
                                   }
                                 },
                                 *value);
}

/// Whether the text, "Adaptor:Index", names an interface: index 0 is none.
bool namesVnic(const base::String& text) {
  const std::size_t colon = text.view().find(':');
  return colon != std::string_view::npos &&
         text.view().find_first_not_of('0', colon + 1) != std::string_view::npos;
}

bool hasVnics(const method::Config& ldu) {
  return std::any_of(ldu.children().begin(), ldu.children().end(), [](const method::Config& link) {
    return namesVnic(valueOf(link, ExternalLduLinkMo::kBladeVnic1)) ||
           namesVnic(valueOf(link, ExternalLduLinkMo::kBladeVnic2)) ||
           namesVnic(valueOf(link, sd::AppLduLinkMo::kBladeVnic1)) ||
           namesVnic(valueOf(link, sd::AppLduLinkMo::kBladeVnic2));
  });
}

bool hasManagementLink(const method::Config& ldu) {
  return std::any_of(ldu.children().begin(), ldu.children().end(), [](const method::Config& link) {
    return link.classId() == ExternalLduLinkMo::kClassId &&
           isGiven(&link, ExternalLduLinkMo::kLinkInterfaceType.id) &&
           valueOf(link, ExternalLduLinkMo::kLinkInterfaceType) ==
               static_cast<std::uint8_t>(sd::LinkInterfaceType::kMgmt);
  });
}

std::optional<std::string> missingForStart(const method::Config& instance,
                                           const CommandNeeds& needs) {
  const method::Config* const ldu = childOf(instance, sd::LduMo::kClassId);
  if (ldu == nullptr) {
    return "ldu";
  }
  if (needs.dataVnics && !hasVnics(*ldu)) {
    return "ldu.links with a bladeVnic1 or bladeVnic2";
  }
  const bool isVdp = valueOf(*childOf(instance, kApp), sm::AppMo::kVdp);
  const bool hasCluster = childOf(instance, sd::ClusterBootstrapMo::kClassId) != nullptr;
  if ((!isVdp || hasCluster) && !hasManagementLink(*ldu)) {
    return "ldu.links with linkInterfaceType mgmt";
  }
  if (needs.bladeSerial &&
      !isGiven(childOf(instance, sd::BladeMo::kClassId), sd::BladeMo::kSerial.id)) {
    return "blade.serial";
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> missingValue(const method::Config& instance, JobVerb verb,
                                        const CommandNeeds& needs) {
  for (const Need& need : kNeeds) {
    const method::Config* const holder =
        need.classId == kInstance ? &instance : childOf(instance, need.classId);
    if (need.verb == verb && !isGiven(holder, need.propertyId)) {
      return std::string(need.field);
    }
  }
  return verb == JobVerb::kStart ? missingForStart(instance, needs) : std::nullopt;
}

}  // namespace dme
