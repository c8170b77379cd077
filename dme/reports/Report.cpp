#include "dme/reports/Report.h"

#include <cmath>
#include <variant>

#include "dme/base/Text.h"
#include "model/sm/AppInstanceMo.h"

namespace dme {

namespace {

std::size_t mostBytesOf(std::uint32_t propertyId) {
  return propertyId == sm::AppInstanceMo::kHotfixes.id ? kMostHotfixesBytes : kMostTextBytes;
}

}  // namespace

bool takeReport(const method::Config& config, mo::Mo& object, ReportCounters& counters) {
  if (config.classId() != object.classId()) {
    return false;
  }
  counters.unfitValues += mo::fromConfig(config, object, mo::kReportGroups);
  for (const mo::PropertyInfo& info : object.classInfo()->properties) {
    const method::Value* const value = object.find(info.id);
    if (value == nullptr) {
      continue;
    }
    if (const auto* text = std::get_if<base::String>(value)) {
      const std::size_t most = mostBytesOf(info.id);
      if (text->size() > most) {
        ++counters.cutTexts;
        object.set(info.id, cutText(*text, most));
      }
    } else if (const auto* number = std::get_if<float>(value);
               number != nullptr && !std::isfinite(*number)) {
      ++counters.unfitValues;
      object.clear(info.id);
    }
  }
  return true;
}

}  // namespace dme
