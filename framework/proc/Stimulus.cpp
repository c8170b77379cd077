#include "framework/proc/Stimulus.h"

#include <utility>

// header   layout u32, class id u32, type u32, intent u32, bulk u32, priority u32,
//          response required u32, reserved u32, data bits u32, address 4 x u32, cookie
// cookie   length u32, bytes

namespace proc {

namespace {

bool isPriority(std::uint32_t word) {
  return word <= static_cast<std::uint32_t>(Stimulus::Priority::kHighest);
}

bool readWords(base::IBioStream& stream) {
  (void)stream;
  return true;
}

template <class... Rest>
bool readWords(base::IBioStream& stream, std::uint32_t& word, Rest&... rest) {
  return stream.read(word) && readWords(stream, rest...);
}

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
  const auto priority = static_cast<std::uint32_t>(header_.priority);
  for (const std::uint32_t word :
       {kLayout, header_.classId, type, header_.intent, header_.bulk, priority, responseRequired,
        header_.reserved, header_.dataBits, address.service, address.instance, address.sender,
        address.senderInstance}) {
    stream.write(word);
  }
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
  Header read;
  std::uint32_t layout = 0;
  std::uint32_t priority = 0;
  const bool isRead =
      readWords(stream, layout, read.classId, read.type, read.intent, read.bulk, priority,
                read.responseRequired, read.reserved, read.dataBits, read.address.service,
                read.address.instance, read.address.sender, read.address.senderInstance) &&
      stream.read(read.cookie);
  if (!isRead || layout != kLayout || !isPriority(priority) ||
      (read.responseRequired != 0 && read.responseRequired != kResponseRequired) ||
      read.cookie.size() > kMostCookieBytes) {
    return false;
  }
  read.priority = static_cast<Priority>(priority);
  header_ = std::move(read);
  failure_.reset();
  return true;
}

}  // namespace proc
