#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

namespace core_log {

namespace detail {

enum class ArgumentKind { kUnsupported, kInteger, kFloating, kText, kPointer };

/// What a printf argument is once it has been promoted, size in bytes.
struct ArgumentType {
  ArgumentKind kind = ArgumentKind::kUnsupported;
  std::size_t size = 0;
};

template <typename T>
consteval ArgumentType argumentType() {
  if constexpr (std::is_integral_v<T> ||
                (std::is_enum_v<T> && std::is_convertible_v<T, long long>)) {
    return {ArgumentKind::kInteger, sizeof(T) < sizeof(int) ? sizeof(int) : sizeof(T)};
  } else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>) {
    return {ArgumentKind::kFloating, sizeof(double)};
  } else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, char*>) {
    return {ArgumentKind::kText, sizeof(T)};
  } else if constexpr (std::is_pointer_v<T> || std::is_null_pointer_v<T>) {
    return {ArgumentKind::kPointer, sizeof(void*)};
  } else {
    return {};
  }
}

// Never defined. A format that does not fit its arguments calls one of these while it is being
// checked, which ends the compilation with the function's name in the message.
void formatHasFewerArgumentsThanSpecifiers();
void formatHasMoreArgumentsThanSpecifiers();
void formatArgumentIsNotAnIntegerOfThatSize();
void formatArgumentIsNotAFloatingPointNumber();
void formatArgumentIsNotAConstCharPointer();
void formatArgumentIsNotAPointer();
void formatSpecifierIsUnknownOrNotAllowed();
void formatHasAControlCharacterOtherThanOneLineFeedAtItsEnd();

/// Walks a printf format and matches each conversion with the next argument.
class FormatChecker {
 public:
  consteval FormatChecker(std::string_view text, const ArgumentType* types, std::size_t count)
      : text_(text), types_(types), count_(count) {}

  consteval void check() {
    while (pos_ < text_.size()) {
      const char c = text_[pos_++];
      if (c == '%') {
        conversion();
      } else if (isControl(c) && !(c == '\n' && pos_ == text_.size())) {
        formatHasAControlCharacterOtherThanOneLineFeedAtItsEnd();
      }
    }
    if (used_ < count_) {
      formatHasMoreArgumentsThanSpecifiers();
    }
  }

 private:
  static consteval bool isControl(char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }

  [[nodiscard]] consteval char peek() const { return pos_ < text_.size() ? text_[pos_] : '\0'; }

  consteval bool accept(char c) {
    if (peek() != c) {
      return false;
    }
    ++pos_;
    return true;
  }

  consteval ArgumentType next() {
    if (used_ == count_) {
      formatHasFewerArgumentsThanSpecifiers();
    }
    return types_[used_++];
  }

  consteval void wantInteger(std::size_t size) {
    const ArgumentType type = next();
    if (type.kind != ArgumentKind::kInteger || type.size != size) {
      formatArgumentIsNotAnIntegerOfThatSize();
    }
  }

  consteval void widthOrPrecision() {
    if (accept('*')) {
      wantInteger(sizeof(int));
      return;
    }
    while (peek() >= '0' && peek() <= '9') {
      ++pos_;
    }
  }

  /// The size in bytes that the length modifier asks of an integer; 0 without a modifier.
  consteval std::size_t lengthModifier() {
    if (accept('h')) {
      accept('h');
      return sizeof(int);
    }
    if (accept('l')) {
      return accept('l') ? sizeof(long long) : sizeof(long);
    }
    if (accept('j') || accept('z') || accept('t')) {
      return sizeof(std::size_t);
    }
    return 0;
  }

  consteval void conversion() {
    if (accept('%')) {
      return;
    }
    while (accept('-') || accept('+') || accept(' ') || accept('#') || accept('0')) {
    }
    widthOrPrecision();
    if (accept('.')) {
      widthOrPrecision();
    }
    const std::size_t length = lengthModifier();
    const char specifier = peek();
    ++pos_;
    if (isOneOf(specifier, "diouxX")) {
      wantInteger(length == 0 ? sizeof(int) : length);
    } else if (length != 0) {
      formatSpecifierIsUnknownOrNotAllowed();
    } else {
      plainConversion(specifier);
    }
  }

  consteval void plainConversion(char specifier) {
    if (specifier == 'c') {
      wantInteger(sizeof(int));
    } else if (isOneOf(specifier, "aAeEfFgG")) {
      if (next().kind != ArgumentKind::kFloating) {
        formatArgumentIsNotAFloatingPointNumber();
      }
    } else if (specifier == 's') {
      if (next().kind != ArgumentKind::kText) {
        formatArgumentIsNotAConstCharPointer();
      }
    } else if (specifier == 'p') {
      const ArgumentKind kind = next().kind;
      if (kind != ArgumentKind::kPointer && kind != ArgumentKind::kText) {
        formatArgumentIsNotAPointer();
      }
    } else {
      formatSpecifierIsUnknownOrNotAllowed();
    }
  }

  static consteval bool isOneOf(char c, std::string_view set) {
    return c != '\0' && set.find(c) != std::string_view::npos;
  }

  std::string_view text_;
  const ArgumentType* types_;
  std::size_t count_;
  std::size_t pos_ = 0;
  std::size_t used_ = 0;
};

}  // namespace detail

/// A printf format that was matched with its argument types when it was compiled: the number of
/// arguments, and for each conversion an integer of its size, a floating point number, a
/// `const char*` or a pointer. A mismatch does not compile. Flags, width and precision (also `*`)
/// and the length modifiers hh, h, l, ll, j, z, t are known; `%n` and wide characters are not.
/// The only control character that a format may hold is one LF at its end.
///
/// Converts implicitly from a string literal. A table of texts holds it as
/// `constexpr core_log::FormatString<const char*, int>`.
template <typename... Args>
class FormatString {
 public:
  // NOLINTNEXTLINE(google-explicit-constructor): a literal is the argument everywhere.
  consteval FormatString(const char* text) : text_(text) {
    constexpr std::array<detail::ArgumentType, sizeof...(Args) + 1> kTypes{
        detail::argumentType<Args>()...};
    detail::FormatChecker(text, kTypes.data(), sizeof...(Args)).check();
  }

  [[nodiscard]] constexpr const char* text() const { return text_; }

 private:
  const char* text_;
};

}  // namespace core_log
