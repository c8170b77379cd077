#include "dme/ObjectClass.h"

#include <algorithm>
#include <array>

namespace dme {

namespace {

constexpr bool kDurable = true;
constexpr bool kVolatile = false;

constexpr std::array kSystemProperties{
    PropertyInfo{1, "clusterId", ValueKind::kUint64, kDurable},
    PropertyInfo{2, "epoch", ValueKind::kUint64, kDurable},
};

constexpr std::array kChassisProperties{
    PropertyInfo{1, "id", ValueKind::kUint32, kDurable},
    PropertyInfo{2, "name", ValueKind::kText, kDurable},
    PropertyInfo{3, "model", ValueKind::kText, kDurable},
    PropertyInfo{4, "serial", ValueKind::kText, kDurable},
    PropertyInfo{5, "isDescribed", ValueKind::kBool, kDurable},
};

constexpr std::array kSlotProperties{
    PropertyInfo{1, "number", ValueKind::kUint32, kDurable},
    PropertyInfo{2, "name", ValueKind::kText, kDurable},
    PropertyInfo{3, "token", ValueKind::kText, kDurable},
    PropertyInfo{4, "admission", ValueKind::kUint8, kDurable},
    PropertyInfo{5, "runningVersion", ValueKind::kText, kDurable},
    PropertyInfo{6, "runningImage", ValueKind::kText, kDurable},
    PropertyInfo{7, "runningImageSize", ValueKind::kUint32, kDurable},
    PropertyInfo{8, "cachedVersion", ValueKind::kText, kDurable},
    PropertyInfo{9, "cachedImage", ValueKind::kText, kDurable},
    PropertyInfo{10, "cachedImageSize", ValueKind::kUint32, kDurable},
    PropertyInfo{11, "startupVersion", ValueKind::kText, kDurable},
    PropertyInfo{12, "vendor", ValueKind::kText, kDurable},
    PropertyInfo{13, "registrations", ValueKind::kUint32, kVolatile},
};

}  // namespace

const ClassInfo system_object::kClass{"system", kSystemProperties};
const ClassInfo chassis_object::kClass{"chassis", kChassisProperties};
const ClassInfo slot_object::kClass{"slot", kSlotProperties};

const PropertyInfo* ClassInfo::find(std::string_view property) const {
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [&](const PropertyInfo& info) { return info.name == property; });
  return found == properties.end() ? nullptr : &*found;
}

const ClassInfo* findClass(std::string_view name) {
  for (const ClassInfo* info :
       {&slot_object::kClass, &chassis_object::kClass, &system_object::kClass}) {
    if (info->name == name) {
      return info;
    }
  }
  return nullptr;
}

}  // namespace dme
