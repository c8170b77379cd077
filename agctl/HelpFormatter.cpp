#include "agctl/HelpFormatter.h"

#include <sstream>

namespace agctl {
namespace {

constexpr std::size_t kColumns = 100;

/// The text with a line break in the place of a blank before each word that does not fit.
std::string wrapped(const std::string& text, std::size_t columns) {
  std::istringstream words(text);
  std::string lines;
  std::size_t width = 0;
  for (std::string word; words >> word; width += word.size()) {
    if (width + 1 + word.size() > columns) {
      lines += '\n';
      width = 0;
    } else if (width > 0) {
      lines += ' ';
      ++width;
    }
    lines += word;
  }
  return lines;
}

}  // namespace

std::string HelpFormatter::make_description(const CLI::App* app) const {
  return app->get_description() + "\n";
}

std::string HelpFormatter::make_subcommand(const CLI::App* sub) const {
  std::ostringstream out;
  CLI::detail::format_help(out, sub->get_name(),
                           wrapped(sub->get_description(), kColumns - get_column_width()),
                           get_column_width());
  return out.str();
}

/// Only groups of options are expanded: those of which some have to be given.
std::string HelpFormatter::make_expanded(const CLI::App* sub) const {
  return make_group(sub->get_group(), false, sub->get_options([sub](const CLI::Option* option) {
    return option != sub->get_help_ptr();
  }));
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
  return wrapped(option->get_description(), kColumns - get_column_width());
}

}  // namespace agctl
