#include "framework/msglyr/LinkBatch.h"

namespace msglyr {

void appendToBatch(std::string& batch, std::string_view message) {
  const auto length = static_cast<std::uint32_t>(message.size());
  for (unsigned shift = 0; shift < 8 * kLengthBytes; shift += 8) {
    batch.push_back(static_cast<char>(length >> shift & 0xff));
  }
  batch.append(message);
}

bool splitBatch(std::string_view batch, std::vector<std::string_view>& messages) {
  messages.clear();
  while (!batch.empty()) {
    if (batch.size() < kLengthBytes) {
      return false;
    }
    std::size_t length = 0;
    for (std::size_t i = 0; i < kLengthBytes; ++i) {
      length |= std::size_t{static_cast<unsigned char>(batch[i])} << 8 * i;
    }
    batch.remove_prefix(kLengthBytes);
    if (length > batch.size()) {
      return false;
    }
    messages.push_back(batch.substr(0, length));
    batch.remove_prefix(length);
  }
  return true;
}

}  // namespace msglyr
