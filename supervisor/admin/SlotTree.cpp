#include "supervisor/admin/SlotTree.h"

#include <string_view>

namespace supervisor::admin {
namespace {

/// The objects whose name is `prefix` and one more step that starts with `step`.
class Children {
 public:
  Children(const std::vector<dme::ObjectView>& objects, std::string prefix)
      : objects_(objects), prefix_(std::move(prefix)) {}

  /// Each as its name and properties, handed to `complete` before it is taken.
  template <class Complete>
  Json of(std::string_view step, const Complete& complete) const {
    Json found = Json::array();
    for (const dme::ObjectView& object : objects_) {
      if (isChild(object.dn, step)) {
        Json json{{"dn", object.dn}};
        json.update(propertiesOf(object));
        complete(object.dn, json);
        found.push_back(std::move(json));
      }
    }
    return found;
  }
  Json of(std::string_view step) const {
    return of(step, [](const std::string&, Json&) {});
  }

 private:
  bool isChild(std::string_view dn, std::string_view step) const {
    if (!dn.starts_with(prefix_ + "/")) {
      return false;
    }
    const std::string_view rest = dn.substr(prefix_.size() + 1);
    return rest.starts_with(step) && rest.find('/') == std::string_view::npos;
  }

  const std::vector<dme::ObjectView>& objects_;
  const std::string prefix_;
};

/// Where what is known of an application instance comes from.
struct Source {
  std::string_view step;  ///< how the instance's last step begins
  std::string_view name;
};
constexpr Source kSources[] = {{"app-", "believed"}, {"reported-", "reported"}};

}  // namespace

Json describeBelowSlot(const std::string& dn, const std::vector<dme::ObjectView>& objects) {
  const Children slot(objects, dn);
  Json monitors = slot.of("monitor", [&](const std::string& name, Json& monitor) {
    monitor["disks"] = Children(objects, name).of("disk-");
  });
  Json instances = Json::array();
  for (const Source& source : kSources) {
    const Json found = slot.of(source.step, [&](const std::string& name, Json& instance) {
      instance["source"] = source.name;
      instance["faults"] = Children(objects, name).of("fault-");
      instance["operations"] = Children(objects, name).of("operation");
    });
    instances.insert(instances.end(), found.begin(), found.end());
  }
  return {{"monitor", monitors.empty() ? Json() : monitors.front()},
          {"instances", std::move(instances)},
          {"operations", slot.of("operation")}};
}

}  // namespace supervisor::admin
