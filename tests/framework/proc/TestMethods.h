#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/method/MethodObject.h"

// Methods for tests alone.

namespace test_methods {

/// In: a number and a text. Out: a number and a text.
class EchoMe : public method::MethodObject<EchoMe, method::In<std::uint32_t, base::String>,
                                           method::Out<std::uint32_t, base::String>> {
 public:
  static constexpr std::uint32_t kClassId = 9001;
  static constexpr std::string_view kName = "test::Echo";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// As EchoMe, but keeping its order: without bulk.
class OrderedMe : public method::MethodObject<OrderedMe, method::In<std::uint32_t>, method::Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 9002;
  static constexpr std::string_view kName = "test::Ordered";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

}  // namespace test_methods
