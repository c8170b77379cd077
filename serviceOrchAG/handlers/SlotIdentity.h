#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "framework/base/String.h"

// What the request handlers and the dispatcher share. No state; every function may be called from
// any thread at the same time.
namespace zan_serviceOrchAG {

/// The slot number in a blade's identity, "sma_slot3" gives 3. Any number but 0 passes, negative
/// ones too. Throws std::invalid_argument, after a line in the log, when there is no number.
std::int32_t getIdentitySlotId(const std::string& identity);

/// The text without blanks, tabs, line feeds, carriage returns, form feeds and vertical tabs at
/// both ends.
base::String trim(base::String text);
/// The same without a copy: a part of `text`.
inline std::string_view trimmed(std::string_view text) {
  const auto isWhiteSpace = [](char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
  };
  while (!text.empty() && isWhiteSpace(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isWhiteSpace(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

/// The engine's value for a state word of an application instance, 7 for the active state and 3 for
/// the inactive one; -1 for any other word.
std::int32_t getAdminState(const base::String& word);
std::int32_t getOperState(const base::String& word);

/// The supervisor's public host key: the last line of its file, read afresh. Empty when the file
/// cannot be read. Blocks on the disk.
std::string getZedPubKey();

/// What stands behind the first "." of a command word; the whole word when it has none.
base::String withoutCommandPrefix(const base::String& word);

/// True for a report about the progress of a disk format. `key` is the dispatch key.
bool isFormatStatusProgress(const std::string& key, const std::string& document);

/// Decimal text of a std::int32_t or std::uint32_t.
template <class Number>
std::string NumberToString(Number number);

extern template std::string NumberToString(std::int32_t number);
extern template std::string NumberToString(std::uint32_t number);

}  // namespace zan_serviceOrchAG
