#include "supervisor/admin/AppDescription.h"

#include <algorithm>
#include <limits>
#include <span>
#include <string_view>

#include "model/AllClasses.h"
#include "model/Snapshot.h"
#include "supervisor/admin/Children.h"
#include "supervisor/admin/Fields.h"
#include "supervisor/admin/Problem.h"
#include "supervisor/admin/PropertyJson.h"

namespace supervisor::admin {
namespace {

using Instance = sd::AppInstanceMo;

/// How often a part can stand there.
enum class Times : std::uint8_t { kOnce, kMany };

constexpr std::size_t kMost = 64;

struct Part {
  std::string_view member;
  const mo::ClassInfo* info;
  Times times;
  std::span<const Part> parts;  ///< that it has itself
};

constexpr Part kIp{"ip", &sd::IPMo::kClass, Times::kOnce, {}};
constexpr Part kLinkParts[] = {kIp};
constexpr Part kLduParts[] = {
    {"links", &sd::ExternalLduLinkMo::kClass, Times::kMany, kLinkParts},
    {"appLinks", &sd::AppLduLinkMo::kClass, Times::kMany, {}},
};
constexpr Part kInternalParts[] = {
    kIp,
    {"systemMac", &sd::SystemMacMo::kClass, Times::kOnce, {}},
};
constexpr Part kMgmtParts[] = {
    kIp,
    {"ipv6", &sd::IPV6Mo::kClass, Times::kOnce, {}},
};
constexpr Part kInstanceParts[] = {
    {"app", &sm::AppMo::kClass, Times::kOnce, {}},
    {"resource", &sd::ResourceMo::kClass, Times::kOnce, {}},
    {"ldu", &sd::LduMo::kClass, Times::kOnce, kLduParts},
    {"clusterBootstrap", &sd::ClusterBootstrapMo::kClass, Times::kOnce, {}},
    {"internalMgmtBootstrap", &sd::InternalMgmtBootstrapMo::kClass, Times::kOnce, kInternalParts},
    {"mgmtBootstrap", &sd::MgmtBootstrapMo::kClass, Times::kOnce, kMgmtParts},
    {"netMgmtBootstraps", &sd::NetMgmtBootstrapMo::kClass, Times::kMany, {}},
};

// --- reading
// --------------------------------------------------------------------------------------

void readParts(Fields& fields, std::span<const Part> parts, mo::Mo& object);

std::unique_ptr<mo::Mo> readPart(Fields& fields, const Part& part) {
  auto object = model::objectOf(method::Config(part.info->id, mo::Dn()));
  for (const mo::PropertyInfo& property : part.info->properties) {
    if (const Json* const value = fields.find(property.name)) {
      object->set(property.id, readValue(property, *value, fields.pathOf(property.name)));
    }
  }
  readParts(fields, part.parts, *object);
  fields.end();
  return object;
}

void readParts(Fields& fields, std::span<const Part> parts, mo::Mo& object) {
  for (const Part& part : parts) {
    if (part.times == Times::kMany) {
      for (Fields& each : fields.list(part.member, kMost)) {
        object.attach(readPart(each, part));
      }
    } else if (auto one = fields.object(part.member)) {
      object.attach(readPart(*one, part));
    }
  }
}

std::uint32_t readSlot(Fields& fields) {
  const auto slot = fields.number("slot", 0, std::numeric_limits<std::uint32_t>::max());
  if (!slot) {
    throw ProblemError(badValue("slot", "'slot' is missing", "give the number of a slot"));
  }
  return static_cast<std::uint32_t>(*slot);
}

// --- what is not given
// ----------------------------------------------------------------------------

template <class T>
void setIfMissing(mo::Mo& object, const mo::Property<T>& property,
                  const std::type_identity_t<T>& value) {
  if (object.find(property.id) == nullptr) {
    object.set(property, value);
  }
}

template <class Me>
Me& resolveOrAttach(mo::Mo& object) {
  Me* const there = object.resolve<Me>();
  return there != nullptr ? *there : static_cast<Me&>(*object.attach(std::make_unique<Me>()));
}

void completeApp(mo::Mo& app) {
  using App = sm::AppMo;
  constexpr std::uint64_t kTimeout = 300;  // seconds
  setIfMissing(app, App::kDeployType, static_cast<std::uint8_t>(sm::DeployType::kNative));
  setIfMissing(app, App::kReqDataHdd, 1);
  setIfMissing(app, App::kInstallTimeout, kTimeout);
  setIfMissing(app, App::kUninstallTimeout, kTimeout);
  setIfMissing(app, App::kUpgradeTimeout, kTimeout);
}

void completeResource(mo::Mo& resource) {
  using Resource = sd::ResourceMo;
  constexpr std::uint32_t kMegabytes = 1024;
  setIfMissing(resource, Resource::kReqCpuCores, 1);
  setIfMissing(resource, Resource::kMaxAllowedRam, kMegabytes);
  setIfMissing(resource, Resource::kReqDataHdd, kMegabytes);
}

/// Without a management link no application starts.
void completeLdu(mo::Mo& ldu) {
  using Link = sd::ExternalLduLinkMo;
  setIfMissing(ldu, sd::LduMo::kLabel, "ldu");
  if (ldu.resolve<Link>() != nullptr) {
    return;
  }
  auto link = std::make_unique<Link>();
  link->set(Link::kPortName, "mgmt0");
  link->set(Link::kLinkInterfaceType, static_cast<std::uint8_t>(sd::LinkInterfaceType::kMgmt));
  link->set(Link::kMgmtSubType, static_cast<std::uint8_t>(sd::MgmtSubType::kManagement));
  link->set(Link::kVlan, 1);
  link->set(Link::kBladeVnic1, "1:1");
  ldu.attach(std::move(link));
}

void complete(mo::Mo& instance) {
  setIfMissing(instance, Instance::kMgmtBootstrapVersion, "1");
  completeApp(resolveOrAttach<sm::AppMo>(instance));
  completeResource(resolveOrAttach<sd::ResourceMo>(instance));
  completeLdu(resolveOrAttach<sd::LduMo>(instance));
  if (!instance.resolve<sm::AppMo>()->get(sm::AppMo::kVdp)) {
    // Without addresses the blade finds its own; it is the lack of the whole that looks like an
    // error to who reads the log.
    resolveOrAttach<sd::MgmtBootstrapMo>(instance);
  }
}

void checkPackage(const mo::Mo& instance) {
  const sm::AppMo* const app = instance.resolve<sm::AppMo>();
  if (app == nullptr || app->get(sm::AppMo::kPackageFile).empty()) {
    throw ProblemError(badValue("app.packageFile", "'app.packageFile' is missing",
                                "give the path from which the blade fetches the package"));
  }
}

// --- writing
// --------------------------------------------------------------------------------------

void describeParts(const Children& children, std::span<const Part> parts, Json& json);

Json describePart(const Children& children, const dme::ObjectView& object, const Part& part) {
  Json json = Json::object();
  for (const auto& [name, value] : object.values) {
    if (const mo::PropertyInfo* const property = part.info->find(std::string_view(name))) {
      json[name] = writeValue(*property, value);
    }
  }
  describeParts(children.below(object.dn), part.parts, json);
  return json;
}

void describeParts(const Children& children, std::span<const Part> parts, Json& json) {
  for (const Part& part : parts) {
    Json found = Json::array();
    for (const dme::ObjectView* const object : children.ofClass(part.info->name)) {
      found.push_back(describePart(children, *object, part));
    }
    if (!found.empty()) {
      json[std::string(part.member)] =
          part.times == Times::kMany ? std::move(found) : std::move(found.front());
    }
  }
}

}  // namespace

AppDescription readApp(const Json& body) {
  Fields fields(body);
  auto instance = std::make_unique<Instance>();
  instance->set(Instance::kAppInstanceId, fields.requiredText("id"));
  const std::uint32_t slot = readSlot(fields);
  if (const auto version = fields.text("version"); version && !version->empty()) {
    instance->set(Instance::kExpectedVersion, *version);
  }
  if (const auto version = fields.text(Instance::kMgmtBootstrapVersion.name)) {
    instance->set(Instance::kMgmtBootstrapVersion, *version);
  }
  readParts(fields, kInstanceParts, *instance);
  fields.end();
  checkPackage(*instance);
  complete(*instance);
  return {slot, std::move(instance)};
}

Json describeApp(std::uint32_t slot, const std::string& dn,
                 const std::vector<dme::ObjectView>& objects) {
  Json json = Json::object();
  const auto instance = std::ranges::find(objects, dn, &dme::ObjectView::dn);
  if (instance == objects.end()) {
    return json;
  }
  const auto copy = [&](const char* member, std::string_view property) {
    for (const auto& [name, value] : instance->values) {
      if (name == property) {
        json[member] = toJson(value);
      }
    }
  };
  copy("id", Instance::kAppInstanceId.name);
  json["slot"] = slot;
  copy("version", Instance::kExpectedVersion.name);
  copy("mgmtBootstrapVersion", Instance::kMgmtBootstrapVersion.name);
  describeParts(Children(objects, dn), kInstanceParts, json);
  return json;
}

}  // namespace supervisor::admin
