#pragma once

#include <cstddef>
#include <string_view>

namespace noxxml {

class AgElement;
class AgFactory;

// Parses documents as blades write them, at a fraction of the general parser's cost: elements
// without attributes, printable ASCII, nothing to decode, at most a declaration in front. Whatever
// else there is in a text, it gives up, and the general parser decides what the text is worth; so
// it never takes what that one refuses, nor reads anything otherwise.
class PlainParser {
 public:
  // The larger texts are for the general parser, which looks them over before it builds anything.
  static constexpr std::size_t kMostBytes = 65536;

  // `text` has a NUL behind it, belongs to the factory and stays as it is.
  PlainParser(AgFactory& factory, std::string_view text, unsigned maxDepth) noexcept
      : factory_(factory), at_(text.data()), end_(at_ + text.size()), depthLeft_(maxDepth) {}

  // The root, or null when the text is not that plain or no document at all; elements that were
  // made until then stay in the factory.
  AgElement* parse();

 private:
  void skipBlanks() noexcept;
  bool skipDeclaration() noexcept;
  bool readStartTag();
  bool readEndTag() noexcept;
  bool readText() noexcept;

  AgFactory& factory_;
  const char* at_;
  const char* const end_;
  unsigned depthLeft_;
  AgElement* root_ = nullptr;
  AgElement* open_ = nullptr;  // the innermost element whose end tag has not come yet
};

}  // namespace noxxml
