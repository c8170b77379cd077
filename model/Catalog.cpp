#include "model/Catalog.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "framework/meta/Describe.h"
#include "framework/proc/Answer.h"
#include "framework/proc/EngineCall.h"
#include "model/AllMethods.h"

namespace model {

namespace {

using meta::TypeId;

constexpr std::uint32_t number(TypeId type) {
  return static_cast<std::uint32_t>(type);
}

// ----- Methods: rows made from the method classes -------------------------------------------

template <class... Me>
constexpr auto methodRows(MethodList<Me...>) {
  return std::array{meta::describe<Me>()...};
}

template <class... Me>
constexpr auto argRows(MethodList<Me...>) {
  std::array<meta::Arg, (meta::describeArgs<Me>().size() + ...)> rows{};
  std::size_t next = 0;
  const auto append = [&](const auto& some) {
    for (const meta::Arg& arg : some) {
      rows[next++] = arg;
    }
  };
  (append(meta::describeArgs<Me>()), ...);
  return rows;
}

constexpr auto kMethods = methodRows(AllMethods());
constexpr auto kArgs = argRows(AllMethods());

template <class Rows>
constexpr bool areIdsDistinct(const Rows& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (rows[i].id == rows[j].id) {
        return false;
      }
    }
  }
  return true;
}

static_assert(kMethods.size() == 27);
static_assert(areIdsDistinct(kMethods), "two methods share a class id");

// The framework makes these calls by number.
static_assert(proc::kClusterStateRequestClass == dmeapi::ClusterStateRequestMe::kClassId);
static_assert(proc::kRefreshLogControlClass == sysdebug::RefreshLogControlMe::kClassId);
static_assert(proc::kBootstrapClass == agboot::BootstrapMe::kClassId);
static_assert(proc::kBootstrapDoneClass == agboot::BootstrapDoneMe::kClassId);

// ----- Managed objects that blades report ----------------------------------------------------

constexpr std::uint32_t kMonitor = 0x286;
constexpr std::uint32_t kDiskFileSystem = 0x289;
constexpr std::uint32_t kAppInstance = 0x28f;

constexpr std::array kClasses = {
    meta::Class{kMonitor, "sm::Monitor"},
    meta::Class{kDiskFileSystem, "sm::DiskFileSystem"},
    meta::Class{kAppInstance, "sm::AppInstance"},
};

// Memory and disk sizes are in megabytes.
constexpr std::array kProps = {
    meta::Prop{0x82f, kMonitor, "osVersion", number(TypeId::kText)},
    meta::Prop{0x837, kMonitor, "sysUptime", number(TypeId::kText)},
    meta::Prop{0x830, kMonitor, "cpuMinus1", number(TypeId::kFloat)},
    meta::Prop{0x831, kMonitor, "cpuMinus5", number(TypeId::kFloat)},
    meta::Prop{0x832, kMonitor, "cpuMinus15", number(TypeId::kFloat)},
    meta::Prop{0x2811, kMonitor, "memTotal", number(TypeId::kU32)},
    meta::Prop{0x2812, kMonitor, "memFree", number(TypeId::kU32)},
    meta::Prop{0x2813, kMonitor, "memUsed", number(TypeId::kU32)},
    meta::Prop{0x2814, kMonitor, "appsMemTotal", number(TypeId::kU32)},
    meta::Prop{0x836, kMonitor, "diskCount", number(TypeId::kI32)},
    meta::Prop{0x841, kDiskFileSystem, "diskName", number(TypeId::kText)},
    meta::Prop{0x2815, kDiskFileSystem, "diskTotal", number(TypeId::kU32)},
    meta::Prop{0x2816, kDiskFileSystem, "diskFree", number(TypeId::kU32)},
    meta::Prop{0x2817, kDiskFileSystem, "diskUsed", number(TypeId::kU32)},
    meta::Prop{0x843, kDiskFileSystem, "diskMountPoint", number(TypeId::kText)},
    meta::Prop{0x87e, kAppInstance, "appInstanceId", number(TypeId::kText)},
    meta::Prop{0x883, kAppInstance, "operStatus", number(TypeId::kU8)},
    meta::Prop{0x88d, kAppInstance, "externalSoftwareManagement", number(TypeId::kBool)},
    meta::Prop{0x880, kAppInstance, "installedVersion", number(TypeId::kText)},
    meta::Prop{0x88c, kAppInstance, "hotfixes", number(TypeId::kText)},
};

constexpr std::array kNameRefs = {
    meta::NameRef{1, kDiskFileSystem, 0x841},
    meta::NameRef{2, kAppInstance, 0x87e},
};

constexpr std::array kPropValidators = {
    meta::PropValidator{0x830, 0, 1e9},
    meta::PropValidator{0x831, 0, 1e9},
    meta::PropValidator{0x832, 0, 1e9},
    meta::PropValidator{0x836, 0, 2147483647},
};

static_assert(areIdsDistinct(kClasses) && areIdsDistinct(kProps) && areIdsDistinct(kNameRefs));
static_assert(std::all_of(kProps.begin(), kProps.end(), [](const meta::Prop& prop) {
  return std::any_of(kClasses.begin(), kClasses.end(),
                     [&](const meta::Class& each) { return each.id == prop.classId; });
}));

// ----- The rest -----------------------------------------------------------------------------

constexpr std::array kTypes = {
    meta::Type{number(TypeId::kNone), "none"},
    meta::Type{number(TypeId::kBool), "bool"},
    meta::Type{number(TypeId::kU8), "u8"},
    meta::Type{number(TypeId::kI32), "i32"},
    meta::Type{number(TypeId::kU32), "u32"},
    meta::Type{number(TypeId::kU64), "u64"},
    meta::Type{number(TypeId::kFloat), "float"},
    meta::Type{number(TypeId::kText), "text"},
    meta::Type{number(TypeId::kName), "name"},
    meta::Type{number(TypeId::kConfig), "config"},
    meta::Type{number(TypeId::kConfigSet), "configSet"},
};

constexpr std::array kResults = {
    meta::Result{proc::kNoHandlerCode, "no handler"},
    meta::Result{proc::kUndecodableCode, "undecodable"},
    meta::Result{proc::kExceptionCode, "exception"},
    meta::Result{1003, "refused"},
};

constexpr std::array kDomains = {meta::AppDomain{1, "chassis"}};
constexpr std::array kServices = {meta::Svc{26, "serviceOrchAG", 1}};

// The engine's state machines belong to the objects that they run on: an application instance and
// a slot. A service only carries their numbers.
constexpr std::array kFsmStateHandlers = {
    meta::FsmStateHandler{1, kAppInstance},
    meta::FsmStateHandler{2, 0},
};
constexpr std::array kFsmThrottles = {
    meta::FsmThrottle{1, 1},
    meta::FsmThrottle{2, 1},
};

}  // namespace

std::span<const meta::Type> types() {
  return kTypes;
}
std::span<const meta::Prop> props() {
  return kProps;
}
std::span<const meta::NameRef> nameRefs() {
  return kNameRefs;
}
std::span<const meta::Class> classes() {
  return kClasses;
}
std::span<const meta::Result> results() {
  return kResults;
}
std::span<const meta::PropValidator> propValidators() {
  return kPropValidators;
}
std::span<const meta::Arg> args() {
  return kArgs;
}
std::span<const meta::Method> methods() {
  return kMethods;
}
std::span<const meta::Svc> services() {
  return kServices;
}
std::span<const meta::AppDomain> domains() {
  return kDomains;
}
std::span<const meta::FsmStateHandler> fsmStateHandlers() {
  return kFsmStateHandlers;
}
std::span<const meta::FsmThrottle> fsmThrottles() {
  return kFsmThrottles;
}

}  // namespace model
