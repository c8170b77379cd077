#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "framework/base/String.h"

// What texts look like that the engine keeps, tells a blade or writes for people.

namespace dme {

inline constexpr std::size_t kMostTextBytes = 255;
inline constexpr std::size_t kMostIdentifierBytes = 128;

/// The text, or its beginning of up to `most` bytes that does not end within a UTF-8 character.
base::String cutText(const base::String& text, std::size_t most = kMostTextBytes);

/// An application instance's identifier: letters, digits and "._:-", 1 to kMostIdentifierBytes of
/// them, and none of the texts that stand for no value in a command.
bool isIdentifier(std::string_view text);
/// Up to kMostTextBytes without control characters.
bool isPlainText(std::string_view text);
/// Whether a command leaves the value out: it is empty, "0" or "::".
bool standsForNothing(std::string_view text);
/// Any text as a piece of one line for people, cut to `most` bytes.
std::string oneLine(std::string_view text, std::size_t most = 64);

}  // namespace dme
