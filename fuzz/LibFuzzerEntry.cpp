#include <cstddef>
#include <cstdint>

#include "fuzz/Target.h"

// The one function that libFuzzer calls; which target it runs is decided when it is compiled.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Target& target = *fuzz::findTarget(ZAN_FUZZ_TARGET);
  target.run({data, size});
  return 0;
}
