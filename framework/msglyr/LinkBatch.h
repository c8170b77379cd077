#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace msglyr {

// What a link sends as one transport message:
//
//   batch   := message*
//   message := length bytes          length: 4 bytes, little-endian
//
// An empty batch announces a peer that has just connected.

inline constexpr std::size_t kLengthBytes = 4;

void appendToBatch(std::string& batch, std::string_view message);

// Replaces `messages` by views into the batch. False if the batch is malformed.
bool splitBatch(std::string_view batch, std::vector<std::string_view>& messages);

}  // namespace msglyr
