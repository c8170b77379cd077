#pragma once

#include <string_view>

#include "framework/noxxml/Limits.h"

namespace noxxml {

// Looks over a document before the parser builds anything of it. True when it
// - is not longer, not nested deeper and not of more elements than the limits allow,
// - holds no document type declaration (hence no entities but the five of XML itself), and
// - is one root element with nothing but blanks, comments and processing instructions around
//   it, every tag, comment and section of it being closed, and no NUL byte.
// Tags are counted, not matched: whether they nest properly the parser finds out.
bool isAdmissible(std::string_view text, const Limits& limits) noexcept;

// A quick look that finds the documents that blades send. True when the parser can be left alone
// with the text, which is admissible if it parses, has one root and is neither too deep nor of too
// many elements: it holds legal characters only, no attributes, references, comments or sections,
// and nothing around the tags of the root but blanks and a declaration. Some admissible documents
// are not plain. A large one never is, so that its depth is known before the parser builds
// anything.
bool isPlainDocument(std::string_view text, const Limits& limits) noexcept;

}  // namespace noxxml
