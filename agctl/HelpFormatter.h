#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace agctl {

/// Writes help texts for terminals of 100 columns, and says in a line which options are needed.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_description(const CLI::App* app) const override;
  std::string make_subcommand(const CLI::App* sub) const override;
  std::string make_expanded(const CLI::App* sub) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
};

}  // namespace agctl
