#pragma once

#include <cerrno>
#include <string>
#include <system_error>
#include <tl/expected.hpp>
#include <utility>

namespace dme {

/// Why something failed: one line for the operator that names the file, the cause and what to do.
struct Error {
  std::string text;
  int code = 0;  ///< SQLite's extended result code where it is the cause, else 0
};

template <class T>
using Result = tl::expected<T, Error>;

inline tl::unexpected<Error> failure(std::string text, int code = 0) {
  return tl::unexpected<Error>(Error{std::move(text), code});
}

/// The text of errno.
inline std::string lastSystemError() {
  return std::generic_category().message(errno);
}

}  // namespace dme
