#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Arguments that several verbs have. What a function returns is filled while the command line is
// read; values that cannot be are refused then.

namespace agctl {

/// Slots and ranges of slots, sorted, each once.
std::shared_ptr<std::vector<std::uint32_t>> addSlots(CLI::App& app);
/// An application instance's identifier: of one that is there unless it says otherwise.
std::shared_ptr<std::string> addAppId(CLI::App& app, bool isNew = false);
/// Numbers of jobs; `offered` are those that a shell offers.
std::shared_ptr<std::vector<std::uint64_t>> addJobIds(CLI::App& app, const char* offered);

/// Decimal digits for a number from `least` to `most`.
CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most);
/// A slot's number as an option's value.
CLI::Validator slotNumber();
/// Whether it may stand in an identifier.
bool isIdentifierLetter(char letter);
/// The supervisor's identifiers: 1 to 128 letters, digits and . _ : -
CLI::Validator identifier();
/// A text of up to 255 bytes without control characters.
CLI::Validator writtenText();
/// The same, and not empty.
CLI::Validator shortText();

}  // namespace agctl
