#include "framework/proc/Stimulus.h"

#include <type_traits>
#include <utility>

// header   layout u32, class id u32, type u32, intent u32, bulk u32, priority u32,
//          response required u32, reserved u32, data bits u32, address 4 x u32, cookie
// cookie   length u32, bytes

namespace proc {

namespace {

bool isPriority(std::uint32_t word) {
  return word <= static_cast<std::uint32_t>(Stimulus::Priority::kHighest);
}

/// The fixed part of the header, as it travels. One block, because it is written for every
/// heartbeat.
struct Words {
  std::uint32_t layout;
  std::uint32_t classId;
  std::uint32_t type;
  std::uint32_t intent;
  std::uint32_t bulk;
  std::uint32_t priority;
  std::uint32_t responseRequired;
  std::uint32_t reserved;
  std::uint32_t dataBits;
  Address address;
};
static_assert(sizeof(Words) == 52 && std::is_trivially_copyable_v<Words>);

}  // namespace

Stimulus::Stimulus(std::uint32_t classId, std::uint32_t type, std::uint32_t intent,
                   std::uint32_t bulk, Priority priority, std::uint32_t responseRequired,
                   std::uint32_t reserved) {
  reset(classId, type, intent, bulk, priority, responseRequired, reserved);
}

void Stimulus::reset(std::uint32_t classId, std::uint32_t type, std::uint32_t intent,
                     std::uint32_t bulk, Priority priority, std::uint32_t responseRequired,
                     std::uint32_t reserved) {
  header_.classId = classId;
  header_.type = type;
  header_.intent = intent;
  header_.bulk = bulk;
  header_.priority = priority;
  header_.responseRequired = responseRequired;
  header_.reserved = reserved;
  header_.dataBits = 0;
  header_.address = Address();
  header_.cookie.clear();
  failure_.reset();
}

bool Stimulus::dataBit(unsigned int bit) const {
  return bit < 32 && (header_.dataBits >> bit & 1U) != 0;
}

void Stimulus::setDataBit(unsigned int bit, bool value) {
  if (bit >= 32) {
    return;
  }
  const std::uint32_t mask = std::uint32_t{1} << bit;
  header_.dataBits = value ? header_.dataBits | mask : header_.dataBits & ~mask;
}

void Stimulus::reportFailure(ResultBits bits, std::uint32_t code, const base::String& text) {
  if (failure_ == nullptr) {
    failure_ = std::make_unique<Failure>(Failure{bits, code, text});
  }
}

void Stimulus::writeHeader(base::OBioStream& stream, std::uint32_t type,
                           std::uint32_t responseRequired, const Address& address) const {
  const Words words{
      kLayout,          header_.classId,  type,
      header_.intent,   header_.bulk,     static_cast<std::uint32_t>(header_.priority),
      responseRequired, header_.reserved, header_.dataBits,
      address};
  stream.loopWrite(reinterpret_cast<const unsigned char*>(&words), sizeof(words));
  stream.write(header_.cookie);
}

void Stimulus::serialize(base::OBioStream& stream) const {
  writeHeader(stream, header_.type, header_.responseRequired, header_.address);
}

void Stimulus::serializeAnswer(base::OBioStream& stream) const {
  const Address& from = header_.address;
  const Address back{from.sender, from.senderInstance, from.service, from.instance};
  writeHeader(stream, kTypeAnswer, 0, back);
}

bool Stimulus::deserialize(base::IBioStream& stream) {
  Words words{};
  base::Buffer cookie;
  if (!stream.loopRead(reinterpret_cast<unsigned char*>(&words), sizeof(words)) ||
      !stream.read(cookie) || words.layout != kLayout || !isPriority(words.priority) ||
      (words.responseRequired != 0 && words.responseRequired != kResponseRequired) ||
      cookie.size() > kMostCookieBytes) {
    return false;
  }
  header_ = {words.classId,
             words.type,
             words.intent,
             words.bulk,
             static_cast<Priority>(words.priority),
             words.responseRequired,
             words.reserved,
             words.dataBits,
             words.address,
             std::move(cookie)};
  failure_.reset();
  return true;
}

}  // namespace proc
