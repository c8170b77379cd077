#include "model/Catalog.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "framework/meta/Describe.h"
#include "framework/proc/Answer.h"
#include "framework/proc/EngineCall.h"
#include "model/AllClasses.h"
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

// ----- Managed objects: rows made from their classes ------------------------------------------

constexpr auto& kClassInfos = AllClasses::kInfos;

constexpr std::size_t countOf(auto isWanted) {
  std::size_t count = 0;
  for (const mo::ClassInfo* const each : kClassInfos) {
    for (const mo::PropertyInfo& property : each->properties) {
      count += isWanted(property) ? 1 : 0;
    }
  }
  return count;
}

constexpr bool isAny(const mo::PropertyInfo& /*property*/) {
  return true;
}
constexpr bool isNaming(const mo::PropertyInfo& property) {
  return property.group == mo::kNamingGroup;
}

constexpr auto kClasses = [] {
  std::array<meta::Class, AllClasses::kSize> rows{};
  std::transform(kClassInfos.begin(), kClassInfos.end(), rows.begin(),
                 [](const mo::ClassInfo* each) {
                   return meta::Class{each->id, each->name};
                 });
  return rows;
}();

constexpr auto kProps = [] {
  std::array<meta::Prop, countOf(isAny)> rows{};
  std::size_t next = 0;
  for (const mo::ClassInfo* const each : kClassInfos) {
    for (const mo::PropertyInfo& property : each->properties) {
      rows[next++] = {property.id, each->id, property.name,
                      static_cast<std::uint32_t>(property.kind)};
    }
  }
  return rows;
}();

constexpr auto kNameRefs = [] {
  std::array<meta::NameRef, countOf(isNaming)> rows{};
  std::uint32_t next = 0;
  for (const mo::ClassInfo* const each : kClassInfos) {
    for (const mo::PropertyInfo& property : each->properties) {
      if (isNaming(property)) {
        rows[next] = {next + 1, each->id, property.id};
        ++next;
      }
    }
  }
  return rows;
}();

constexpr std::array kPropValidators = {
    meta::PropValidator{sm::MonitorMo::kCpuMinus1.id, 0, 1e9},
    meta::PropValidator{sm::MonitorMo::kCpuMinus5.id, 0, 1e9},
    meta::PropValidator{sm::MonitorMo::kCpuMinus15.id, 0, 1e9},
    meta::PropValidator{sm::MonitorMo::kDiskCount.id, 0, 2147483647},
    meta::PropValidator{sd::OperationMo::kPercentage.id, 0, 100},
};

// Names are what the database finds classes and properties by.
constexpr bool areNamesDistinct() {
  for (std::size_t i = 0; i < kClassInfos.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (kClassInfos[i]->name == kClassInfos[j]->name) {
        return false;
      }
    }
    for (const mo::PropertyInfo& property : kClassInfos[i]->properties) {
      if (kClassInfos[i]->find(property.name) != &property) {
        return false;
      }
    }
  }
  return true;
}

static_assert(areIdsDistinct(kClasses), "two classes share an id");
static_assert(areIdsDistinct(kProps), "two properties share an id");
static_assert(areNamesDistinct(), "two classes, or two properties of a class, share a name");

// The numbers of meta's types are the tags of values.
static_assert(number(TypeId::kBool) == static_cast<std::uint32_t>(method::ValueKind::kBool) &&
              number(TypeId::kText) == static_cast<std::uint32_t>(method::ValueKind::kText));

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
    meta::FsmStateHandler{1, sd::AppInstanceMo::kClassId},
    meta::FsmStateHandler{2, sd::SlotMo::kClassId},
};
constexpr std::array kFsmThrottles = {
    meta::FsmThrottle{1, 1},
    meta::FsmThrottle{2, 1},
};

template <class Wanted>
const mo::ClassInfo* findClassIf(Wanted isWanted) {
  const auto found = std::find_if(kClassInfos.begin(), kClassInfos.end(), isWanted);
  return found == kClassInfos.end() ? nullptr : *found;
}

}  // namespace

std::span<const mo::ClassInfo* const> classInfos() {
  return kClassInfos;
}
const mo::ClassInfo* findClass(std::string_view name) {
  return findClassIf([name](const mo::ClassInfo* each) { return each->name == name; });
}
const mo::ClassInfo* findClass(std::uint32_t id) {
  return findClassIf([id](const mo::ClassInfo* each) { return each->id == id; });
}

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
