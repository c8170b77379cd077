#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

// What a shell offers for a value on the command line is said where the value is declared, by a
// validator.

namespace agctl {

inline constexpr const char* kOfferFiles = "files";
// What the running supervisor has.
inline constexpr const char* kOfferSlots = "slots";
inline constexpr const char* kOfferApps = "apps";
inline constexpr const char* kOfferJobs = "jobs";
inline constexpr const char* kOfferOpenJobs = "open jobs";
inline constexpr const char* kOfferJobsToCancel = "jobs to cancel";
inline constexpr const char* kOfferHooks = "hooks";

/// Takes anything and offers what is of this kind.
CLI::Validator offer(const std::string& kind);
/// Takes anything and offers these words.
CLI::Validator offerWords(const std::vector<std::string>& words);
/// Takes nothing but these words and offers them.
CLI::Validator oneOf(const std::vector<std::string>& words);

/// What is offered for an option's value: a kind, or words. Neither where nothing was said.
struct Offered {
  std::string kind;
  std::vector<std::string> words;
};
Offered offered(CLI::Option& option);

}  // namespace agctl
