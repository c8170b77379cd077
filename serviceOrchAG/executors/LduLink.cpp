#include "serviceOrchAG/executors/LduLink.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "framework/base/Regexp.h"
#include "framework/core_log/Log.h"
#include "framework/core_utils/Numbers.h"
#include "framework/filter/Filter.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/LduMo.h"
#include "serviceOrchAG/executors/Addresses.h"

namespace zan_serviceOrchAG {

namespace {

using Link = sd::ExternalLduLinkMo;

std::vector<const Link*> asLinks(const std::vector<mo::Mo*>& objects) {
  std::vector<const Link*> links;
  links.reserve(objects.size());
  for (const mo::Mo* const object : objects) {
    if (const Link* const link = mo::checkCast<Link>(object)) {
      links.push_back(link);
    }
  }
  return links;
}

/// The index as a number. Throws std::invalid_argument when it is none.
std::int32_t indexOf(const std::vector<base::String>& pieces) {
  std::int32_t index = 0;
  core_utils::stringToInt(pieces.size() > 1 ? pieces[1] : base::String(), index);
  return index;
}

template <typename... Args>
void log(int level, core_log::FormatString<std::type_identity_t<Args>...> format, Args... args) {
  core_log::logPrintf("getVnic", core_log::serviceLevel(), level, format, args...);
}

}  // namespace

std::vector<const Link*> externalLinks(const sd::LduMo& ldu) {
  return asLinks(ldu.findChild(Link::kClassId));
}

std::vector<const Link*> externalLinks(const sd::LduMo& ldu, sd::LinkInterfaceType type) {
  const std::unique_ptr<filter::Filter> ofType = filter::Filter::create(
      "eq", Link::kLinkInterfaceType.id, method::Value(static_cast<std::uint8_t>(type)));
  if (ofType == nullptr) {  // no filter would mean every link
    return {};
  }
  return asLinks(ldu.findChild(Link::kClassId, ofType.get()));
}

const Link* managementLink(const sd::LduMo& ldu) {
  const std::vector<const Link*> links = externalLinks(ldu, sd::LinkInterfaceType::kMgmt);
  return links.empty() ? nullptr : links.front();
}

base::String getVnic(const base::String& text, const sd::AppInstanceMo& instance) {
  const std::vector<base::String> pieces = base::Regexp::split(text, ":");
  const base::String& adaptor = pieces.front();
  if (adaptor != "1" && adaptor != "2") {
    log(5, "STARTAPP : vnicIndex adaptorId = %s (must me 1 or 2)", adaptor.c_str());
    return {};
  }
  if (pieces.size() > 1 && pieces[1] == "0") {
    return {};
  }
  try {
    const std::int32_t index = indexOf(pieces);
    if (instance.resolveSdLdu() == nullptr) {
      log(6, "STARTAPP : %s : LduMo is null",
          instance.get(sd::AppInstanceMo::kAppInstanceId).c_str());
      return {};
    }
    return std::to_string(index);
  } catch (const std::invalid_argument& error) {
    log(8, "STARTAPP : vnicIndex [%s]: %s", text.c_str(), error.what());
    return {};
  }
}

base::String getLinkInterfaceType(const Link& link) {
  return link.stringify(Link::kLinkInterfaceType);
}

base::String getExternalLinkLduMgmtSubType(const Link& link) {
  return link.stringify(Link::kMgmtSubType);
}

bool isToldByMac(const Link& link) {
  const sd::LinkInterfaceType type = link.linkInterfaceType();
  return type == sd::LinkInterfaceType::kDirect ||
         (type == sd::LinkInterfaceType::kMgmt && link.get(Link::kHasMac));
}

base::String macAddressOf(const Link& link) {
  return link.find(Link::kSystemMac.id) != nullptr ? convertMacAddress(link.get(Link::kSystemMac))
                                                   : base::String();
}

}  // namespace zan_serviceOrchAG
