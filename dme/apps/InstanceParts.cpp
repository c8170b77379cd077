#include "dme/apps/InstanceParts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "dme/base/Text.h"
#include "model/AllClasses.h"
#include "model/Catalog.h"
#include "model/Snapshot.h"

namespace dme {

namespace {

struct Place {
  std::uint32_t classId;
  std::uint32_t aboveId;
  std::string_view step;   ///< of the object's name; the naming value follows where there is one
  std::string_view field;  ///< as people write it
  std::uint32_t namingId;  ///< the property that tells several apart; 0 where there is one at most
};

constexpr std::array kPlaces{
    Place{sm::AppMo::kClassId, sd::AppInstanceMo::kClassId, "app", "app", 0},
    Place{sd::LduMo::kClassId, sd::AppInstanceMo::kClassId, "ldu", "ldu", 0},
    Place{sd::ExternalLduLinkMo::kClassId, sd::LduMo::kClassId, "link-", "links",
          sd::ExternalLduLinkMo::kPortName.id},
    Place{sd::IPMo::kClassId, sd::ExternalLduLinkMo::kClassId, "ip", "ip", 0},
    Place{sd::AppLduLinkMo::kClassId, sd::LduMo::kClassId, "appLink-", "appLinks",
          sd::AppLduLinkMo::kLabel.id},
    Place{sd::ResourceMo::kClassId, sd::AppInstanceMo::kClassId, "resource", "resource", 0},
    Place{sd::ClusterBootstrapMo::kClassId, sd::AppInstanceMo::kClassId, "clusterBootstrap",
          "clusterBootstrap", 0},
    Place{sd::InternalMgmtBootstrapMo::kClassId, sd::AppInstanceMo::kClassId,
          "internalMgmtBootstrap", "internalMgmtBootstrap", 0},
    Place{sd::IPMo::kClassId, sd::InternalMgmtBootstrapMo::kClassId, "ip", "ip", 0},
    Place{sd::SystemMacMo::kClassId, sd::InternalMgmtBootstrapMo::kClassId, "systemMac",
          "systemMac", 0},
    Place{sd::MgmtBootstrapMo::kClassId, sd::AppInstanceMo::kClassId, "mgmtBootstrap",
          "mgmtBootstrap", 0},
    Place{sd::IPMo::kClassId, sd::MgmtBootstrapMo::kClassId, "ip", "ip", 0},
    Place{sd::IPV6Mo::kClassId, sd::MgmtBootstrapMo::kClassId, "ipv6", "ipv6", 0},
    Place{sd::NetMgmtBootstrapMo::kClassId, sd::AppInstanceMo::kClassId, "netMgmtBootstrap-",
          "netMgmtBootstraps", sd::NetMgmtBootstrapMo::kKey.id},
};

const Place* placeOf(std::uint32_t classId, std::uint32_t aboveId) {
  const auto* const found = std::find_if(kPlaces.begin(), kPlaces.end(), [&](const Place& place) {
    return place.classId == classId && place.aboveId == aboveId;
  });
  return found == kPlaces.end() ? nullptr : found;
}

/// The highest number that makes sense, where that is less than the property could hold.
struct Bound {
  std::uint32_t propertyId;
  std::uint64_t most;
};
constexpr std::uint64_t kWeek = std::uint64_t{7} * 24 * 3600;
constexpr std::array kBounds{
    Bound{sm::AppMo::kReqDataHdd.id, std::uint64_t{1} << 32U},
    Bound{sm::AppMo::kInstallTimeout.id, kWeek},
    Bound{sm::AppMo::kUninstallTimeout.id, kWeek},
    Bound{sm::AppMo::kUpgradeTimeout.id, kWeek},
    Bound{sd::ExternalLduLinkMo::kVlan.id, 4094},
    Bound{sd::ExternalLduLinkMo::kSystemMac.id, 0xffffffffffff},
    Bound{sd::SystemMacMo::kMac.id, 0xffffffffffff},
    Bound{sd::ClusterBootstrapMo::kIPv6PrefixLength.id, 128},
    Bound{sd::IPV6Mo::kPrefixLength.id, 128},
};
// Texts of the form "Adaptor:Index".
constexpr std::array kVnics{sd::ExternalLduLinkMo::kBladeVnic1.id,
                            sd::ExternalLduLinkMo::kBladeVnic2.id, sd::AppLduLinkMo::kBladeVnic1.id,
                            sd::AppLduLinkMo::kBladeVnic2.id,
                            sd::InternalMgmtBootstrapMo::kBladeVnic.id};

bool isVnic(std::string_view text) {
  constexpr std::size_t kMostDigits = 4;
  return text.empty() ||
         (text.size() >= 3 && text.size() <= 2 + kMostDigits &&
          (text[0] == '1' || text[0] == '2') && text[1] == ':' &&
          std::all_of(text.begin() + 2, text.end(), [](char c) { return c >= '0' && c <= '9'; }));
}

tl::unexpected<Refusal> refuse(std::string field, std::string detail, std::string remedy) {
  return tl::unexpected(Refusal{Refusal::Reason::kBadValue, std::move(detail), std::move(remedy), 0,
                                std::move(field)});
}

std::string within(const std::string& above, std::string_view field) {
  return above.empty() ? std::string(field) : above + "." + std::string(field);
}

Granted<void> checkText(const std::string& field, std::uint32_t propertyId,
                        const std::string& text) {
  if (!isPlainText(text)) {
    return refuse(field, field + " is no plain text",
                  "give up to 255 bytes without control characters");
  }
  if (std::find(kVnics.begin(), kVnics.end(), propertyId) != kVnics.end() && !isVnic(text)) {
    return refuse(field, field + " is " + oneLine(text) + ", which names no interface of a blade",
                  "write it as adaptor 1 or 2, a colon and an index, as in 1:10");
  }
  return {};
}

Granted<void> checkNumber(const std::string& field, const mo::PropertyInfo& info,
                          std::uint64_t number) {
  if (info.enumeration != nullptr &&
      std::none_of(info.enumeration->texts.begin(), info.enumeration->texts.end(),
                   [number](const mo::EnumText& row) { return row.value == number; })) {
    return refuse(field, field + " is " + std::to_string(number) + ", which stands for nothing",
                  "give one of the words that it can be");
  }
  const auto* const bound = std::find_if(kBounds.begin(), kBounds.end(), [&](const Bound& each) {
    return each.propertyId == info.id;
  });
  if (bound != kBounds.end() && number > bound->most) {
    return refuse(field, field + " is " + std::to_string(number),
                  "give a number up to " + std::to_string(bound->most));
  }
  return {};
}

Granted<void> checkValue(const std::string& field, const mo::PropertyInfo& info,
                         const method::Value& value) {
  if (std::holds_alternative<std::monostate>(value)) {
    return {};
  }
  if (method::kindOf(value) != info.kind) {
    return refuse(field, field + " is a value of another kind", "give it as the description says");
  }
  return std::visit(
      [&](const auto& content) -> Granted<void> {
        using T = std::decay_t<decltype(content)>;
        if constexpr (std::is_same_v<T, base::String>) {
          return checkText(field, info.id, content.str());
        } else if constexpr (std::is_integral_v<T>) {
          return checkNumber(field, info, static_cast<std::uint64_t>(content));
        } else {
          return {};
        }
      },
      value);
}

Granted<void> checkValues(const method::Config& object, const std::string& field) {
  const mo::ClassInfo* const info = model::findClass(object.classId());
  for (const auto& [id, value] : object.values()) {
    const mo::PropertyInfo* const property = info->find(id);
    if (property == nullptr) {
      return refuse(field, field + " has a property that its class lacks", "leave it out");
    }
    if (Granted<void> fit = checkValue(within(field, property->name), *property, value); !fit) {
      return fit;
    }
  }
  return {};
}

std::string textOf(const method::Config& object, std::uint32_t propertyId) {
  const method::Value* const value = object.find(propertyId);
  const auto* const text = value != nullptr ? std::get_if<base::String>(value) : nullptr;
  return text != nullptr ? text->str() : "";
}

/// What stands below one object, while its children are looked at.
struct Siblings {
  std::map<const Place*, std::set<std::string>> names;
};

Granted<void> checkChildren(const method::Config& object, const std::string& field);

Granted<void> checkChild(const method::Config& child, const Place& place, const std::string& above,
                         Siblings& siblings) {
  std::set<std::string>& names = siblings.names[&place];
  std::string field = within(above, place.field);
  if (place.namingId != 0) {
    field += "[" + std::to_string(names.size()) + "]";
  }
  const std::string name = place.namingId != 0 ? textOf(child, place.namingId) : "";
  if (place.namingId != 0 && standsForNothing(name)) {
    const auto* const property = model::findClass(child.classId())->find(place.namingId);
    return refuse(within(field, property->name), field + " has no " + std::string(property->name),
                  "give each its own");
  }
  if (!names.insert(name).second || names.size() > InstanceParts::kMostOfAKind) {
    return refuse(field,
                  names.size() > InstanceParts::kMostOfAKind
                      ? "there are more than " + std::to_string(InstanceParts::kMostOfAKind) + " " +
                            std::string(place.field)
                      : field + " is there twice",
                  "leave it out");
  }
  if (Granted<void> fit = checkValues(child, field); !fit) {
    return fit;
  }
  return checkChildren(child, field);
}

Granted<void> checkChildren(const method::Config& object, const std::string& field) {
  Siblings siblings;
  for (const method::Config& child : object.children()) {
    const Place* const place = placeOf(child.classId(), object.classId());
    if (place == nullptr) {
      const mo::ClassInfo* const info = model::findClass(child.classId());
      const std::string name =
          info != nullptr ? std::string(info->name) : "class " + std::to_string(child.classId());
      return refuse(within(field, name),
                    name + " is no part of " + (field.empty() ? "an application instance" : field),
                    "leave it out");
    }
    if (Granted<void> fit = checkChild(child, *place, field, siblings); !fit) {
      return fit;
    }
  }
  return {};
}

mo::Dn nameOf(const mo::Dn& above, const method::Config& object, const Place& place) {
  return above.child(std::string(place.step) +
                     (place.namingId != 0 ? mo::escapeStep(textOf(object, place.namingId)) : ""));
}

method::ValueMap sentValues(const Object& object) {
  method::ValueMap values = object.values();
  values.keepIf([&](std::uint32_t id) {
    const mo::PropertyInfo* const info = object.classInfo().find(id);
    return info != nullptr && info->group != mo::kEngineGroup;
  });
  return values;
}

}  // namespace

Granted<void> InstanceParts::check(const method::Config& instance) {
  if (instance.classId() != sd::AppInstanceMo::kClassId) {
    return refuse("", "the description is of no application instance", "describe an instance");
  }
  if (Granted<void> fit = checkValues(instance, ""); !fit) {
    return fit;
  }
  return checkChildren(instance, "");
}

void InstanceParts::store(ObjectStore& store, const mo::Dn& instance,
                          const method::Config& description) {
  for (const method::Config& child : description.children()) {
    const Place& place = *placeOf(child.classId(), description.classId());
    const mo::Dn dn = nameOf(instance, child, place);
    Object& object = store.create(dn, *model::findClass(child.classId()));
    store.assign(object, *model::objectOf(child), mo::kAllGroups);
    InstanceParts::store(store, dn, child);
  }
}

method::Config InstanceParts::read(ObjectStore& store, const Object& instance) {
  // Parents come before children, so that each object's own is the last one at its depth.
  method::Config root(instance.classInfo().id, instance.dn(), sentValues(instance), 0);
  std::vector<const Object*> parts;
  for (const Object* object : store.below(instance.dn())) {
    parts.push_back(object);
  }
  const auto attach = [&](const auto& self, method::Config& above) -> void {
    for (const Object* part : parts) {
      if (part->dn().parent() == above.dn() &&
          placeOf(part->classInfo().id, above.classId()) != nullptr) {
        self(self, above.addChild(
                       method::Config(part->classInfo().id, part->dn(), sentValues(*part), 0)));
      }
    }
  };
  attach(attach, root);
  return root;
}

}  // namespace dme
