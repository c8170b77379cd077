#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fuzz {

using Input = std::span<const std::uint8_t>;

/// What surrounds a request while it is handled. In an input it is one character, so that a corpus
/// can be read and written by hand.
enum class Manner : std::uint8_t {
  kAccepts,         ///< '0' the engine answers at once: yes
  kRejects,         ///< '1' no
  kWantsRetry,      ///< '2' not yet
  kFails,           ///< '3' the method fails
  kSilent,          ///< '4' the engine never answers
  kAnswersTwice,    ///< '5' first yes, then no
  kRefusesToSend,   ///< '6' the call cannot even be made
  kRefusesAddress,  ///< '7' yes, but nothing can be reached where the blade says it is
  kHostileToken,    ///< '8' yes, with a token that is markup and control characters
};
inline constexpr unsigned kManners = 9;

/// Whether who waits for the engine's answer reads a no.
constexpr bool saysNo(Manner manner) {
  return manner == Manner::kRejects || manner == Manner::kFails ||
         manner == Manner::kAnswersTwice;  // the second answer is there before the first is read
}

/// Takes the manner off the front of an input; every byte stands for one.
inline Manner takeManner(Input& input) {
  if (input.empty()) {
    return Manner::kAccepts;
  }
  const auto place = static_cast<std::uint8_t>(input.front() - '0');
  input = input.subspan(1);
  return static_cast<Manner>(place % kManners);
}

/// The parts of a message in an input, each ended by the unit separator or the end of the input.
std::vector<std::string> partsOf(Input input);

inline std::string textOf(Input input) {
  return {reinterpret_cast<const char*>(input.data()), input.size()};
}

}  // namespace fuzz
