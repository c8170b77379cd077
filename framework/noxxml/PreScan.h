#pragma once

#include <string_view>

#include "framework/noxxml/Limits.h"

namespace noxxml {

// Looks over a document before the parser builds anything of it. True when it
// - is not longer and not nested deeper than the limits allow,
// - holds no document type declaration (hence no entities but the five of XML itself), and
// - is one root element with nothing but blanks, comments and processing instructions around
//   it, every tag, comment and section of it being closed, and no NUL byte.
// Tags are counted, not matched: whether they nest properly the parser finds out.
bool isAdmissible(std::string_view text, const Limits& limits) noexcept;

}  // namespace noxxml
