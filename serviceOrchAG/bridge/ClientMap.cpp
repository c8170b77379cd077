#include "serviceOrchAG/bridge/ClientMap.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <exception>

#include "framework/core_log/Log.h"
#include "serviceOrchAG/bridge/SMAClient.h"

namespace zan_serviceOrchAG {

os::CriticalSection& Critical_section_lock = *new os::CriticalSection;
std::map<std::string, SMAClient*>& ClientMap = *new std::map<std::string, SMAClient*>;

namespace {

/// What peers can make the registry grow by is bounded. Names that no slot has are kept apart from
/// the slots', so that they cannot take their places.
constexpr std::size_t kMostTextBytes = 255;
constexpr std::size_t kMostOddNames = 1024;
constexpr int kHighestSlot = 16384;

/// True for the name of a slot that a chassis can have, in decimal without leading zeros.
bool isSlotName(const std::string& slot) {
  int number = 0;
  const char* const end = slot.data() + slot.size();
  const auto [last, error] = std::from_chars(slot.data(), end, number);
  return error == std::errc() && last == end && slot.front() != '0' && number >= 1 &&
         number <= kHighestSlot;
}

bool hasRoomFor(const std::string& slot, const std::string& ip, const std::string& port) {
  const os::CriticalSection::Guard guard(Critical_section_lock);
  if (std::max({slot.size(), ip.size(), port.size()}) > kMostTextBytes) {
    return false;
  }
  const auto isOdd = [](const auto& entry) {
    return !isSlotName(entry.first);
  };
  return isSlotName(slot) || ClientMap.size() < kMostOddNames ||
         static_cast<std::size_t>(std::count_if(ClientMap.begin(), ClientMap.end(), isOdd)) <
             kMostOddNames;
}

/// The slot's client or null. The caller holds the lock for as long as it uses the result.
SMAClient* findClient(const std::string& slot) {
  const auto entry = ClientMap.find(slot);
  return entry == ClientMap.end() ? nullptr : entry->second;
}

}  // namespace

bool is_bladeRegistered(const std::string& slot) {
  const os::CriticalSection::Guard guard(Critical_section_lock);
  try {
    return findClient(slot) != nullptr;
  } catch (const std::exception&) {
    return false;
  }
}

bool getBladeStatus(const std::string& slot) {
  const os::CriticalSection::Guard guard(Critical_section_lock);
  const SMAClient* const client = findClient(slot);
  return client != nullptr && client->status();
}

void setBladeStatus(const std::string& slot, bool status) {
  const os::CriticalSection::Guard guard(Critical_section_lock);
  try {
    if (SMAClient* const client = findClient(slot)) {
      client->setStatus(status);
    }
  } catch (const std::exception&) {
    // The slot keeps the status that it had.
  }
}

bool removeBladeMapEntry(const std::string& slot) {
  const os::CriticalSection::Guard guard(Critical_section_lock);
  SMAClient* const client = findClient(slot);
  delete client;
  return client != nullptr;
}

void createSMAClient(std::string slot, std::string ip, std::string port, bool status) {
  if (is_bladeRegistered(slot)) {
    core_log::logPrintf("createSMAClient", core_log::serviceLevel(), 1,
                        "SMAClient is already register for slot %s", slot.c_str());
    setBladeStatus(slot, status);
    return;
  }
  if (!hasRoomFor(slot, ip, port)) {
    core_log::logPrintf("createSMAClient", core_log::serviceLevel(), 6,
                        "No SMAClient is made: slot, address or port has more than %zu bytes, or "
                        "there are %zu names already that no slot has",
                        kMostTextBytes, kMostOddNames);
    return;
  }
  const auto portNumber = static_cast<unsigned int>(std::strtol(port.c_str(), nullptr, 10));
  new SMAClient(slot, ip, portNumber, status);  // ClientMap has it from now on
  core_log::logPrintf("createSMAClient", core_log::serviceLevel(), 5,
                      "Registered SMAClient for slot %s at %s:%s", slot.c_str(), ip.c_str(),
                      port.c_str());
}

}  // namespace zan_serviceOrchAG
