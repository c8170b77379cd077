#include "framework/noxxml/PlainParser.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "framework/noxxml/AgElement.h"
#include "framework/noxxml/AgFactory.h"

namespace noxxml {
namespace {

constexpr std::uint8_t kBlank = 1;
constexpr std::uint8_t kText = 2;  // stands in a text as itself
constexpr std::uint8_t kNameStart = 4;
constexpr std::uint8_t kNameRest = 8;

constexpr std::array<std::uint8_t, 256> classes() {
  std::array<std::uint8_t, 256> all{};
  for (unsigned byte = 0x20; byte < 0x7f; ++byte) {
    const auto c = static_cast<char>(byte);
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    const bool isName = isLetter || (c >= '0' && c <= '9') || c == '-' || c == '.';
    all[byte] = static_cast<std::uint8_t>((c == '<' || c == '&' ? 0 : kText) |
                                          (isLetter ? kNameStart : 0) | (isName ? kNameRest : 0));
  }
  for (const char blank : {' ', '\t', '\n'}) {
    all[static_cast<unsigned char>(blank)] = kBlank | kText;
  }
  return all;
}

constexpr std::array<std::uint8_t, 256> kClasses = classes();

bool isOf(char c, std::uint8_t wanted) noexcept {
  return (kClasses[static_cast<unsigned char>(c)] & wanted) != 0;
}

}  // namespace

AgElement* PlainParser::parse() {
  if (!skipDeclaration()) {
    return nullptr;
  }
  skipBlanks();
  do {
    const bool isRead = at_[0] == '<' && (at_[1] == '/' ? readEndTag() : readStartTag());
    if (!isRead || (open_ != nullptr && !readText())) {
      return nullptr;
    }
  } while (open_ != nullptr);
  skipBlanks();
  return at_ == end_ ? root_ : nullptr;
}

void PlainParser::skipBlanks() noexcept {
  while (isOf(*at_, kBlank)) {
    ++at_;
  }
}

bool PlainParser::skipDeclaration() noexcept {
  constexpr std::string_view kBegin = "<?xml version=";
  if (std::strncmp(at_, kBegin.data(), kBegin.size()) != 0) {
    return true;
  }
  while (isOf(*at_, kText) || *at_ == '<') {
    if (at_[0] == '?' && at_[1] == '>') {
      at_ += 2;
      return true;
    }
    ++at_;
  }
  return false;
}

bool PlainParser::readStartTag() {
  const char* const name = ++at_;
  if (!isOf(*at_, kNameStart)) {
    return false;
  }
  while (isOf(*at_, kNameRest)) {
    ++at_;
  }
  const std::string_view text(name, static_cast<std::size_t>(at_ - name));
  const bool isEmpty = *at_ == '/';
  at_ += isEmpty ? 1 : 0;
  if (*at_ != '>' || depthLeft_ == 0) {
    return false;
  }
  ++at_;
  AgElement* const element = factory_.createElement(text, {}, open_);
  if (root_ == nullptr) {
    root_ = element;
  }
  if (!isEmpty) {
    open_ = element;
    --depthLeft_;
  }
  return true;
}

bool PlainParser::readEndTag() noexcept {
  const std::string_view name = open_ == nullptr ? std::string_view() : open_->name_;
  at_ += 2;
  if (open_ == nullptr || std::strncmp(at_, name.data(), name.size()) != 0 ||
      at_[name.size()] != '>') {
    return false;
  }
  at_ += name.size() + 1;
  open_ = open_->parent_;
  ++depthLeft_;
  return true;
}

// Blanks alone are the element's text when it has nothing else, and layout between children.
bool PlainParser::readText() noexcept {
  const char* const begin = at_;
  skipBlanks();
  if (at_[0] == '<') {
    const bool isText = at_ != begin && at_[1] == '/' && open_->firstChild_ == nullptr;
    if (isText) {
      open_->text_ = {begin, static_cast<std::size_t>(at_ - begin)};
    }
    return true;
  }
  while (isOf(*at_, kText)) {
    ++at_;
  }
  if (*at_ != '<' || !open_->text_.empty()) {
    return false;  // nor does it join pieces that a child separates
  }
  open_->text_ = {begin, static_cast<std::size_t>(at_ - begin)};
  return true;
}

}  // namespace noxxml
