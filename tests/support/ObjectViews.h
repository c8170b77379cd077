#pragma once

#include <string>
#include <utility>
#include <vector>

#include "dme/store/ObjectView.h"
#include "framework/mo/Mo.h"
#include "model/AllClasses.h"

namespace test_support {

/// Adds the object and what is attached to it, as an engine would show them below `dn`.
inline void addViews(const mo::Mo& object, const std::string& dn,
                     std::vector<dme::ObjectView>& views) {
  dme::ObjectView view{dn, std::string(object.classInfo()->name), {}};
  for (const mo::PropertyInfo& property : object.classInfo()->properties) {
    if (const method::Value* const value = object.find(property.id)) {
      view.values.emplace_back(property.name, *value);
    }
  }
  views.push_back(std::move(view));
  for (const mo::ClassInfo* const info : model::AllClasses::kInfos) {
    int number = 0;
    for (const mo::Mo* const child : object.findChild(info->id)) {
      addViews(*child, dn + "/" + std::string(info->name) + "-" + std::to_string(number++), views);
    }
  }
}

}  // namespace test_support
