#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "framework/base/BioStream.h"
#include "framework/base/Buffer.h"
#include "framework/base/String.h"

namespace proc {

/// Where a stimulus goes and where it came from, four words as they travel in the header.
struct Address {
  std::uint32_t service = 0;   ///< service id of the receiver
  std::uint32_t instance = 0;  ///< instance of that service
  std::uint32_t sender = 0;    ///< service id of the sender
  std::uint32_t senderInstance = 0;
};

/// A message between a service and the management engine: a method call or the answer to one.
///
/// The header names the method's class, carries the cookie that joins an answer to its call and
/// says whether an answer is wanted; what follows it is the method's arguments. The byte layout
/// of both is in docs/stimulus.md.
///
/// Not thread-safe: one thread builds or handles a stimulus at a time.
class Stimulus {
 public:
  enum class Priority : std::uint32_t { kLowest = 0, kDefault = 4, kHighest = 7 };
  /// A bit set; the engine reads the cause of a failure from it.
  using ResultBits = std::uint32_t;

  static constexpr std::uint32_t kTypeMethod = 0x2000;
  static constexpr std::uint32_t kTypeAnswer = 0x4000;
  /// The two words with which the ends of a link find each other: the service asks whether the
  /// engine is there, the engine says who it is. Neither is a method; both stay in the link.
  static constexpr std::uint32_t kTypeHello = 0x8000;
  static constexpr std::uint32_t kTypeGreeting = 0x8001;
  static constexpr std::uint32_t kIntentNone = 0;
  static constexpr std::uint32_t kIntentBootstrap = 0x10;
  static constexpr std::uint32_t kBulkSet = 0x100000;
  static constexpr std::uint32_t kNoBulk = 0;
  static constexpr std::uint32_t kResponseRequired = 0x200000;
  /// The first word of every stimulus: two letters and the number of the layout.
  static constexpr std::uint32_t kLayout = 0x5A530001;
  /// A longer cookie is refused by the reader.
  static constexpr std::size_t kMostCookieBytes = 64;

  /// What a failed method tells the engine.
  struct Failure {
    ResultBits bits = 0;
    std::uint32_t code = 0;
    base::String text;
  };

  /// `responseRequired` is the header's word: kResponseRequired or 0. The last argument is carried
  /// in the header unread; every known sender writes 0.
  Stimulus(std::uint32_t classId, std::uint32_t type, std::uint32_t intent, std::uint32_t bulk,
           Priority priority, std::uint32_t responseRequired, std::uint32_t reserved);
  virtual ~Stimulus() = default;
  Stimulus(const Stimulus&) = delete;
  Stimulus& operator=(const Stimulus&) = delete;

  std::uint32_t classId() const { return header_.classId; }
  std::uint32_t type() const { return header_.type; }
  std::uint32_t intent() const { return header_.intent; }
  std::uint32_t bulk() const { return header_.bulk; }
  Priority priority() const { return header_.priority; }
  bool isResponseRequired() const { return header_.responseRequired != 0; }
  bool dataBit(unsigned int bit) const;
  const Address& address() const { return header_.address; }
  const base::Buffer& cookie() const { return header_.cookie; }

  void setBulk(std::uint32_t bulk) { header_.bulk = bulk; }
  void setPriority(Priority priority) { header_.priority = priority; }
  /// With false no answer is sent for this method, whatever its outcome.
  void setResponseRequired(bool required) {
    header_.responseRequired = required ? kResponseRequired : 0;
  }
  /// `bit` is below 32.
  void setDataBit(unsigned int bit, bool value);
  void setAddress(const Address& address) { header_.address = address; }
  void setCookie(const base::Buffer& cookie) { header_.cookie = cookie; }

  /// Marks the method failed. The first report stands; later ones are ignored.
  void reportFailure(ResultBits bits, std::uint32_t code, const base::String& text);
  /// The failure reported, or null while the method counts as succeeded.
  const Failure* failure() const { return failure_.get(); }

  /// Appends the header.
  virtual void serialize(base::OBioStream& stream) const;
  /// Appends the header of the answer to this call: the same class, priority and cookie, the
  /// way back as the address, and no response required.
  void serializeAnswer(base::OBioStream& stream) const;
  /// Appends header and arguments: the bytes that travel.
  virtual void encode(base::OBioStream& stream) const { serialize(stream); }
  /// Reads a header, leaving `stream` at the arguments. False when the bytes are no header of
  /// this layout, end too early or hold a value that no sender writes; the stimulus is then
  /// unusable.
  bool deserialize(base::IBioStream& stream);
  /// Makes every header field equal to `other`'s; a failure reported here stays.
  void copyHeader(const Stimulus& other) { header_ = other.header_; }

 protected:
  Stimulus() = default;
  /// Puts every header field back to what the constructor sets; the data bits, the address, the
  /// cookie and the failure go.
  void reset(std::uint32_t classId, std::uint32_t type, std::uint32_t intent, std::uint32_t bulk,
             Priority priority, std::uint32_t responseRequired, std::uint32_t reserved);

 private:
  struct Header {
    std::uint32_t classId = 0;
    std::uint32_t type = 0;
    std::uint32_t intent = 0;
    std::uint32_t bulk = 0;
    Priority priority = Priority::kDefault;
    std::uint32_t responseRequired = 0;
    std::uint32_t reserved = 0;
    std::uint32_t dataBits = 0;
    Address address;
    base::Buffer cookie;
  };

  void writeHeader(base::OBioStream& stream, std::uint32_t type, std::uint32_t responseRequired,
                   const Address& address) const;

  Header header_;
  std::unique_ptr<Failure> failure_;
};

/// A stimulus of a class not known beforehand: what an arriving header is read into.
class StimulusHeader final : public Stimulus {
 public:
  StimulusHeader() = default;
};

}  // namespace proc
