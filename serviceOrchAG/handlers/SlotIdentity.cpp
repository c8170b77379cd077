#include "serviceOrchAG/handlers/SlotIdentity.h"

#include <fstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "framework/base/Regexp.h"
#include "framework/base/SvcConfigParams.h"
#include "framework/core_log/Log.h"
#include "framework/core_utils/Numbers.h"
#include "framework/noxxml/XMLConverter.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {
namespace {

using core_log::logPrintf;
using core_log::serviceLevel;

constexpr std::int32_t kActive = 7;
constexpr std::int32_t kInactive = 3;
constexpr std::int32_t kUnknownState = -1;

}  // namespace

std::int32_t getIdentitySlotId(const std::string& identity) {
  const std::vector<base::String> pieces = base::Regexp::split(identity, envelope::kSlotIdentity);
  if (pieces.size() < 2) {
    logPrintf("getIdentitySlotId", serviceLevel(), 8,
              "SMA sending wrong client identity. Got = %s  Expected = sma_slot<#ID>",
              identity.c_str());
    throw std::invalid_argument("invalid client identity");
  }
  std::int32_t slot = 0;
  try {
    core_utils::stringToInt(pieces[1], slot);
  } catch (const std::exception& error) {
    logPrintf("getIdentitySlotId", serviceLevel(), 8, "Exception caught for %s : slot Id [%s] : %s",
              identity.c_str(), pieces[1].c_str(), error.what());
    throw std::invalid_argument("invalid slot Id conversion");
  }
  if (slot == 0) {
    throw std::invalid_argument("invalid slot Id");
  }
  return slot;
}

base::String trim(base::String text) {
  const std::string_view rest = trimmed(text.view());
  return rest.size() == text.size() ? std::move(text) : base::String(rest);
}

std::int32_t getAdminState(const base::String& word) {
  if (word == names().enable) {
    return kActive;
  }
  return word == names().disable ? kInactive : kUnknownState;
}

std::int32_t getOperState(const base::String& word) {
  if (word.str() == words().stateRunning) {
    return kActive;
  }
  return word.str() == words().stateStopped ? kInactive : kUnknownState;
}

std::string getZedPubKey() {
  const base::String path = base::SvcConfigParams::getInstance().getHostKey();
  std::ifstream file(path.str());
  if (!file) {
    logPrintf("getZedPubKey", serviceLevel(), 1, "Unable to Open file : %s", path.c_str());
    return std::string();
  }
  std::string last;
  for (std::string line; std::getline(file, line);) {
    last.swap(line);
  }
  return last;
}

base::String withoutCommandPrefix(const base::String& word) {
  const std::size_t point = word.view().find('.');
  return point == std::string_view::npos ? word : base::String(word.view().substr(point + 1));
}

bool isFormatStatusProgress(const std::string& key, const std::string& document) {
  if (key != words().commandProgressUpdateKey) {
    return false;
  }
  const auto tags = noxxml::XMLConverter::xml2map(
      document, words().commandProgressUpdateName + envelope::kRequestSuffix);
  const auto command = tags.find(names().operCmd);
  return command != tags.end() &&
         withoutCommandPrefix(command->second).str() == words().formatDiskSubject;
}

template <class Number>
std::string NumberToString(Number number) {
  return std::to_string(number);
}

template std::string NumberToString(std::int32_t number);
template std::string NumberToString(std::uint32_t number);

}  // namespace zan_serviceOrchAG
