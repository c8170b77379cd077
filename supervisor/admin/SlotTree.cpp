#include "supervisor/admin/SlotTree.h"

#include <algorithm>
#include <string_view>

#include "model/Catalog.h"
#include "supervisor/admin/Children.h"
#include "supervisor/admin/PropertyJson.h"

namespace supervisor::admin {
namespace {

/// Its properties, and beside a number that stands for something what it is called.
Json describe(const dme::ObjectView& object) {
  Json json{{"dn", object.dn}};
  const mo::ClassInfo* const info = model::findClass(object.className);
  for (const auto& [name, value] : object.values) {
    json[name] = toJson(value);
    const mo::PropertyInfo* const property = info != nullptr ? info->find(name) : nullptr;
    if (property != nullptr && property->enumeration != nullptr) {
      json[name + "Name"] = writeValue(*property, value);
    }
  }
  return json;
}

Json describeAll(const std::vector<const dme::ObjectView*>& objects) {
  Json all = Json::array();
  for (const dme::ObjectView* const object : objects) {
    all.push_back(describe(*object));
  }
  return all;
}

Json describeInstance(const dme::ObjectView& object, const Children& children,
                      const Json& source = {}) {
  Json json = describe(object);
  if (!source.is_null()) {
    json["source"] = source;
  }
  json["faults"] = describeAll(children.of("fault-"));
  json["operations"] = describeAll(children.of("operation"));
  return json;
}

Json describeMonitor(const Children& slot) {
  const auto monitors = slot.of("monitor");
  if (monitors.empty()) {
    return nullptr;
  }
  Json monitor = describe(*monitors.front());
  monitor["disks"] = describeAll(slot.below(monitors.front()->dn).of("disk-"));
  return monitor;
}

/// Where what is known of an application instance comes from.
struct Source {
  std::string_view step;  ///< how the instance's last step begins
  std::string_view name;
};
constexpr Source kSources[] = {{"app-", "believed"}, {"reported-", "reported"}};

}  // namespace

Json describeBelowSlot(const std::string& dn, const std::vector<dme::ObjectView>& objects) {
  const Children slot(objects, dn);
  Json instances = Json::array();
  for (const Source& source : kSources) {
    for (const dme::ObjectView* const object : slot.of(source.step)) {
      instances.push_back(describeInstance(*object, slot.below(object->dn), source.name));
    }
  }
  return {{"monitor", describeMonitor(slot)},
          {"instances", std::move(instances)},
          {"operations", describeAll(slot.of("operation"))}};
}

Json describeInstance(const std::string& dn, const std::vector<dme::ObjectView>& objects) {
  const auto object = std::ranges::find(objects, dn, &dme::ObjectView::dn);
  return object == objects.end() ? Json() : describeInstance(*object, Children(objects, dn));
}

}  // namespace supervisor::admin
