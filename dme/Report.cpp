#include "dme/Report.h"

#include <cmath>
#include <string_view>
#include <variant>

#include "model/sm/AppInstanceMo.h"

namespace dme {

namespace {

bool isInsideCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::size_t mostBytesOf(std::uint32_t propertyId) {
  return propertyId == sm::AppInstanceMo::kHotfixes.id ? kMostHotfixesBytes : kMostTextBytes;
}

}  // namespace

base::String cutText(const base::String& text, std::size_t most) {
  if (text.size() <= most) {
    return text;
  }
  constexpr std::size_t kLongestCharacter = 4;
  const std::string_view bytes = text.view();
  for (std::size_t end = most; end > 0 && most - end < kLongestCharacter; --end) {
    if (!isInsideCharacter(bytes[end])) {
      return bytes.substr(0, end);
    }
  }
  return bytes.substr(0, most);  // no UTF-8 at all
}

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
