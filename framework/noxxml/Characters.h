#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Which bytes may stand in a document: the character classes of XML 1.0 (fifth edition,
// sections 2.2 and 2.3), in UTF-8.
namespace noxxml {

// True when an element or attribute may bear this name: a Name of XML 1.0 without a colon, as
// prefixes would need a declaration.
bool isLegalName(std::string_view name) noexcept;

// The length of the longest prefix that is valid UTF-8 and holds only characters that XML 1.0
// can carry (no control characters but tab, line feed and carriage return; no surrogates; not
// U+FFFE, U+FFFF). text.size() when there is nothing to repair.
std::size_t legalPrefix(std::string_view text) noexcept;

// The text with every byte that is not UTF-8, and every character that XML 1.0 cannot carry,
// replaced by U+FFFD. At most three times as long.
std::string repaired(std::string_view text);

// Appends a legal text so that a parser reads back exactly that text, carriage returns included
// (and, in an attribute, tabs and line feeds, which would else be read as blanks).
void appendEscapedText(std::string& out, std::string_view text);
void appendEscapedAttribute(std::string& out, std::string_view value);

}  // namespace noxxml
