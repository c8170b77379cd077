#include "fuzz/support/StimulusChecks.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "framework/base/BioStream.h"
#include "framework/method/Config.h"
#include "framework/method/Wire.h"
#include "framework/proc/Answer.h"
#include "fuzz/support/Check.h"
#include "model/AllMethods.h"
#include "model/Snapshot.h"

namespace fuzz {
namespace {

void checkSame(const base::OBioStream& encoded, Input bytes, std::string_view what) {
  check(std::equal(encoded.data(), encoded.data() + encoded.size(), bytes.begin(), bytes.end()),
        "what was decoded encodes to the same bytes", what);
}

/// The part of `bytes` that `stream` has read.
Input readPart(Input bytes, const base::IBioStream& stream) {
  return bytes.first(bytes.size() - stream.remaining());
}

void checkHeader(Input bytes) {
  base::IBioStream stream(bytes.data(), bytes.size());
  proc::StimulusHeader header;
  if (header.deserialize(stream)) {
    base::OBioStream encoded;
    header.serialize(encoded);
    checkSame(encoded, readPart(bytes, stream), "header");
  }
}

template <class Me>
bool isCallOf(Input bytes) {
  const std::unique_ptr<Me> call = method::decodeCall<Me>(bytes.data(), bytes.size());
  if (call == nullptr) {
    return false;
  }
  checkSame(method::encodeCall(*call), bytes, Me::kName);
  return true;
}

template <class Me>
void checkAnswerOf(Input bytes) {
  const auto answer = method::decodeAnswer<Me>(bytes.data(), bytes.size());
  if (!answer) {
    return;
  }
  base::OBioStream encoded;
  answer->me->serialize(encoded);
  const Input tail = bytes.subspan(std::min(encoded.size(), bytes.size()));
  check(!tail.empty(), "an answer has an outcome", Me::kName);
  base::OBioStream results;
  if (answer->failure) {
    results.write(static_cast<std::uint8_t>(proc::Outcome::kFailure));
    results.write(answer->failure->bits);
    results.write(answer->failure->code);
    results.write(answer->failure->text);
  } else {
    results.write(static_cast<std::uint8_t>(proc::Outcome::kSuccess));
    answer->me->serializeResults(results);
  }
  checkSame(results, tail, Me::kName);
}

template <class T>
void checkDecodable(Input bytes, std::string_view what) {
  base::IBioStream stream(bytes.data(), bytes.size());
  T value;
  if (value.deserialize(stream)) {
    base::OBioStream encoded;
    value.serialize(encoded);
    checkSame(encoded, readPart(bytes, stream), what);
  } else {
    check(value == T(), "what does not decode leaves nothing behind", what);
  }
}

base::OBioStream encodeObject(const mo::Mo& object) {
  constexpr unsigned kAllLevels = 8;
  base::OBioStream encoded;
  object.toConfig(mo::kAllGroups, nullptr, kAllLevels).serialize(encoded);
  return encoded;
}

/// The object that a configuration describes may lack what its class does not have; what it has is
/// there to stay.
void checkObjectOf(Input bytes) {
  base::IBioStream stream(bytes.data(), bytes.size());
  method::Config config;
  if (!config.deserialize(stream)) {
    return;
  }
  const std::unique_ptr<mo::Mo> object = model::objectOf(config);
  check(object->classId() == config.classId() && object->changeFlags().empty(),
        "an object is what its configuration says", config.dn().text().str());
  const base::OBioStream encoded = encodeObject(*object);
  base::IBioStream again(encoded.data(), encoded.size());
  check(config.deserialize(again) && again.remaining() == 0, "an object's encoding decodes",
        config.dn().text().str());
  checkSame(encodeObject(*model::objectOf(config)), {encoded.data(), encoded.size()}, "object");
}

}  // namespace

void checkCall(const unsigned char* bytes, std::size_t size) {
  const Input input(bytes, size);
  unsigned methods = 0;
  model::AllMethods::forEach([&]<class Me>() { methods += isCallOf<Me>(input) ? 1 : 0; });
  check(methods == 1, "a call is one of a known method", textOf(input));
}

void checkStimulus(Input bytes) {
  checkHeader(bytes);
  model::AllMethods::forEach([bytes]<class Me>() {
    isCallOf<Me>(bytes);
    checkAnswerOf<Me>(bytes);
  });
}

void checkConfigs(Input bytes) {
  checkDecodable<method::Config>(bytes, "configuration");
  checkDecodable<method::ConfigSet>(bytes, "set of configurations");
  checkObjectOf(bytes);
}

}  // namespace fuzz
