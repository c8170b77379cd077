#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace agctl {

/// The characters that whoever reads a stream can show.
enum class Charset : std::uint8_t { kAscii, kUtf8 };

/// The text as it may be written to a terminal. Control characters, what turns the direction of
/// writing, characters without a shape and bytes that are no UTF-8 become escapes such as \x1B and
/// \u202E; with kAscii so does every character outside ASCII. A very long text is cut, with a
/// marker that says so.
std::string printable(std::string_view text, Charset charset);

/// The columns that a printable text takes on a terminal.
std::size_t displayWidth(std::string_view text);

/// The printable text if it takes at most `width` columns; else its beginning and a mark that more
/// follows, together not more than `width`.
std::string cut(std::string_view text, std::size_t width, Charset charset);

}  // namespace agctl
