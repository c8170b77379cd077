#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

namespace core_log {

/// Formats one line as printf does and returns it as it is emitted: without the LF that the format
/// may end in, escaped, at most kMaxLineBytes long. Consumes `args`. A text that printf refuses
/// (over 2 GiB) yields "(unprintable) " and the format. Throws std::bad_alloc.
std::string formatLine(const char* format, std::va_list args);

/// Writes control characters, DEL, C1 characters and every byte that is not part of a valid UTF-8
/// sequence as \xNN with upper-case digits. A backslash stays as it is.
/// `originalSize` is the length in bytes of the whole text, of which `text` may be the beginning
/// only; it is named in the marker of a line that had to be cut to kMaxLineBytes.
std::string escapeLine(std::string_view text, std::size_t originalSize);

}  // namespace core_log
