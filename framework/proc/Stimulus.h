#pragma once

#include <array>
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
  static constexpr std::uint32_t kIntentNone = 0;
  static constexpr std::uint32_t kIntentBootstrap = 0x10;
  static constexpr std::uint32_t kBulkSet = 0x100000;
  static constexpr std::uint32_t kNoBulk = 0;
  static constexpr std::uint32_t kResponseRequired = 0x200000;

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

  std::uint32_t classId() const { return classId_; }
  std::uint32_t type() const { return type_; }
  std::uint32_t intent() const { return intent_; }
  std::uint32_t bulk() const { return bulk_; }
  Priority priority() const { return priority_; }
  bool isResponseRequired() const { return responseRequired_ != 0; }
  bool dataBit(unsigned int bit) const;
  const Address& address() const { return address_; }
  const base::Buffer& cookie() const { return cookie_; }

  void setBulk(std::uint32_t bulk) { bulk_ = bulk; }
  void setPriority(Priority priority) { priority_ = priority; }
  /// With false no answer is sent for this method, whatever its outcome.
  void setResponseRequired(bool required) { responseRequired_ = required ? kResponseRequired : 0; }
  /// `bit` is below 32.
  void setDataBit(unsigned int bit, bool value);
  void setAddress(const Address& address) { address_ = address; }
  void setCookie(const base::Buffer& cookie) { cookie_ = cookie; }

  /// Marks the method failed. The first report stands; later ones are ignored.
  void reportFailure(ResultBits bits, std::uint32_t code, const base::String& text);
  /// The failure reported, or null while the method counts as succeeded.
  const Failure* failure() const { return failure_.get(); }

  /// Appends the header.
  virtual void serialize(base::OBioStream& stream) const;
  /// Appends header and arguments: the bytes that travel.
  virtual void encode(base::OBioStream& stream) const { serialize(stream); }
  /// Reads a header, leaving `stream` at the arguments. False when the bytes are no header of
  /// this layout or end too early; the stimulus is then unusable.
  bool deserialize(base::IBioStream& stream);

 protected:
  Stimulus() = default;
  /// Puts every header field back to what the constructor sets; the cookie and failure go.
  void reset(std::uint32_t classId, std::uint32_t type, std::uint32_t intent, std::uint32_t bulk,
             Priority priority, std::uint32_t responseRequired, std::uint32_t reserved);

 private:
  std::uint32_t classId_ = 0;
  std::uint32_t type_ = 0;
  std::uint32_t intent_ = 0;
  std::uint32_t bulk_ = 0;
  Priority priority_ = Priority::kDefault;
  std::uint32_t responseRequired_ = 0;
  std::uint32_t reserved_ = 0;
  std::uint32_t dataBits_ = 0;
  Address address_;
  base::Buffer cookie_;
  std::unique_ptr<Failure> failure_;
};

}  // namespace proc
