#include "agctl/Arguments.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>

#include "agctl/Offer.h"
#include "sma/base/SlotRange.h"

namespace agctl {
namespace {

constexpr std::size_t kMostIdentifierBytes = 128;
constexpr std::size_t kMostTextBytes = 255;
constexpr std::uint32_t kMostSlot = 65535;

bool isControl(char letter) {
  return static_cast<unsigned char>(letter) < ' ' || letter == '\x7f';
}

}  // namespace

bool isIdentifierLetter(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= '0' && letter <= '9') || letter == '.' || letter == '_' || letter == ':' ||
         letter == '-';
}

std::shared_ptr<std::vector<std::uint32_t>> addSlots(CLI::App& app) {
  auto slots = std::make_shared<std::vector<std::uint32_t>>();
  app.add_option_function<std::string>(
         "SLOTS",
         [slots](const std::string& text) {
           try {
             *slots = sma::parseSlotRange(text);
           } catch (const std::invalid_argument& error) {
             throw CLI::ValidationError(error.what());
           }
         },
         "slots and ranges of slots, e.g. 1-4,7")
      ->check(offer(kOfferSlots))
      ->option_text(" ")
      ->required();
  return slots;
}

std::shared_ptr<std::string> addAppId(CLI::App& app, bool isNew) {
  auto id = std::make_shared<std::string>();
  auto* option = app.add_option("ID", *id, "the instance's identifier")
                     ->check(identifier())
                     ->option_text(" ")
                     ->required();
  if (!isNew) {
    option->check(offer(kOfferApps));
  }
  return id;
}

std::shared_ptr<std::vector<std::uint64_t>> addJobIds(CLI::App& app, const char* offered) {
  auto ids = std::make_shared<std::vector<std::uint64_t>>();
  app.add_option("JOB", *ids, "numbers of jobs")
      ->check(wholeNumber(1, std::numeric_limits<std::uint64_t>::max()))
      ->check(offer(offered))
      ->option_text(" ")
      ->required();
  return ids;
}

CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most) {
  return {[least, most](std::string& text) -> std::string {
            std::uint64_t number = 0;
            const char* end = text.data() + text.size();
            const auto [last, error] = std::from_chars(text.data(), end, number);
            // A leading zero would make the library read octal digits.
            const bool isNumber =
                error == std::errc() && last == end && (text.front() != '0' || text.size() == 1);
            return isNumber && number >= least && number <= most
                       ? ""
                       : "'" + text + "' is no whole number from " + std::to_string(least) +
                             " to " + std::to_string(most);
          },
          "N"};
}

CLI::Validator slotNumber() {
  return wholeNumber(1, kMostSlot);
}

CLI::Validator identifier() {
  return {[](std::string& text) -> std::string {
            const bool isGood = !text.empty() && text.size() <= kMostIdentifierBytes &&
                                std::all_of(text.begin(), text.end(), isIdentifierLetter);
            return isGood ? ""
                          : "'" + text + "' is no identifier: 1 to 128 letters, digits and . _ : -";
          },
          "ID"};
}

CLI::Validator writtenText() {
  return {[](std::string& text) -> std::string {
            const bool isGood =
                text.size() <= kMostTextBytes && std::none_of(text.begin(), text.end(), isControl);
            return isGood ? "" : "'" + text + "' is not up to 255 bytes without control characters";
          },
          "TEXT"};
}

CLI::Validator shortText() {
  return {[](std::string& text) -> std::string {
            const bool isGood = !text.empty() && text.size() <= kMostTextBytes &&
                                std::none_of(text.begin(), text.end(), isControl);
            return isGood ? "" : "'" + text + "' is not 1 to 255 bytes without control characters";
          },
          "TEXT"};
}

}  // namespace agctl
