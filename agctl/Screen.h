#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "agctl/Printable.h"

namespace agctl {

/// What a word in a table or a line means to the reader.
enum class Tone : std::uint8_t { kPlain, kHeader, kGood, kBad, kUnsure };

/// What can be shown where a stream goes to.
struct Screen {
  static constexpr std::size_t kEndless = std::numeric_limits<std::size_t>::max();

  bool isTerminal = false;
  bool hasColours = false;  ///< a terminal, without NO_COLOR and not a dumb one
  bool canMove = false;     ///< lines that were written can be written anew
  Charset charset = Charset::kUtf8;
  std::size_t columns = kEndless;
  std::size_t rows = kEndless;

  /// Of an open descriptor. A file or a pipe takes lines of any length in UTF-8.
  static Screen of(int descriptor);

  /// The printable text in the tone's colour, if there are colours.
  std::string coloured(const std::string& text, Tone tone) const;
};

}  // namespace agctl
