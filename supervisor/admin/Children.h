#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dme/store/ObjectView.h"

namespace supervisor::admin {

/// The objects right below one, among objects that it borrows.
class Children {
 public:
  Children(const std::vector<dme::ObjectView>& objects, std::string parent)
      : objects_(objects), prefix_(std::move(parent) + "/") {}

  Children below(std::string parent) const { return {objects_, std::move(parent)}; }

  /// Those whose last step begins with `step`, in the order of the objects.
  std::vector<const dme::ObjectView*> of(std::string_view step) const {
    return that(
        [step](const dme::ObjectView&, std::string_view last) { return last.starts_with(step); });
  }
  std::vector<const dme::ObjectView*> ofClass(std::string_view className) const {
    return that([className](const dme::ObjectView& object, std::string_view) {
      return object.className == className;
    });
  }

 private:
  template <class Condition>
  std::vector<const dme::ObjectView*> that(const Condition& condition) const {
    std::vector<const dme::ObjectView*> found;
    for (const dme::ObjectView& object : objects_) {
      const std::string_view dn = object.dn;
      if (!dn.starts_with(prefix_)) {
        continue;
      }
      const std::string_view last = dn.substr(prefix_.size());
      if (last.find('/') == std::string_view::npos && condition(object, last)) {
        found.push_back(&object);
      }
    }
    return found;
  }

  const std::vector<dme::ObjectView>& objects_;
  const std::string prefix_;
};

}  // namespace supervisor::admin
