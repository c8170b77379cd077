#pragma once

#include <concepts>
#include <tuple>

#include "framework/base/BioStream.h"

namespace method {

/// A class that brings its own serialiser: mo::Dn, method::Config, method::ConfigSet.
template <class T>
concept SelfSerializing = requires(const T& value, T& target, base::OBioStream& out,
                                   base::IBioStream& in) {
  value.serialize(out);
  { target.deserialize(in) } -> std::same_as<bool>;
};

template <class T>
void writeArg(base::OBioStream& stream, const T& value) {
  if constexpr (SelfSerializing<T>) {
    value.serialize(stream);
  } else {
    stream.write(value);
  }
}

template <class T>
bool readArg(base::IBioStream& stream, T& value) {
  if constexpr (SelfSerializing<T>) {
    return value.deserialize(stream);
  } else {
    return stream.read(value);
  }
}

/// Appends the values in order: integers in their declared width, a bool as one byte, a text as a
/// four-byte length followed by its characters, a configuration by its own serialiser.
template <class... T>
void writeArgs(base::OBioStream& stream, const std::tuple<T...>& values) {
  std::apply([&](const T&... value) { (writeArg(stream, value), ...); }, values);
}

/// Reads the values in order. False when the stream ends early; the values read so far stay.
template <class... T>
bool readArgs(base::IBioStream& stream, std::tuple<T...>& values) {
  return std::apply([&](T&... value) { return (readArg(stream, value) && ...); }, values);
}

}  // namespace method
