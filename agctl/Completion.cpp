#include "agctl/Completion.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string_view>

#include "agctl/Arguments.h"
#include "agctl/Offer.h"

namespace agctl {
namespace {

/// Where the supervisor has what can be offered.
struct Source {
  const char* kind;
  const char* target;
  const char* list;
  const char* member;  ///< of each element; null where the element is the word itself
};
constexpr std::array kSources{
    Source{kOfferSlots, "/slots", "slots", "slot"},
    Source{kOfferApps, "/apps", "apps", "id"},
    Source{kOfferJobs, "/jobs", "jobs", "id"},
    Source{kOfferOpenJobs, "/jobs?state=accepted,sending,running", "jobs", "id"},
    Source{kOfferJobsToCancel, "/jobs?state=accepted,unknown", "jobs", "id"},
    Source{kOfferHooks, "/faults", "hooks", nullptr}};

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

bool takesSeveral(const CLI::Option& option) {
  return option.get_items_expected_max() > 1;
}

std::vector<CLI::Option*> positionals(CLI::App& app) {
  return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_lnames()) {
    names.push_back("--" + name);
  }
  for (const std::string& name : option.get_snames()) {
    names.push_back("-" + name);
  }
  return names;
}

/// Where the typed words lead to in the grammar.
class Walk {
 public:
  Walk(CLI::App& grammar, const std::vector<std::string>& typed) : app_(&grammar) {
    for (std::size_t i = 0; i + 1 < typed.size(); ++i) {
      pass(typed[i]);
    }
  }

  bool isLost() const { return isLost_; }
  CLI::App& app() { return *app_; }
  bool isInside() const { return app_->get_subcommands(isShown).empty(); }
  std::string value(const std::string& name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? "" : found->second;
  }

  /// The option of this name here or further up, or null.
  CLI::Option* option(const std::string& name) const {
    for (CLI::App* app = app_; app != nullptr; app = app->get_parent()) {
      if (CLI::Option* const found = app->get_option_no_throw(name)) {
        return found;
      }
    }
    return nullptr;
  }
  /// Whose value the next word is: an option that waits for it, else a positional, or null.
  CLI::Option* awaited() const { return awaited_; }
  CLI::Option* positional() {
    const auto all = positionals(*app_);
    if (all.empty() || (places_ >= all.size() && !takesSeveral(*all.back()))) {
      return nullptr;
    }
    return all[std::min(places_, all.size() - 1)];
  }
  bool canBeOption() const { return awaited_ == nullptr && !isPositionalOnly_; }

  /// The names of options that were not given yet, here and further up.
  std::vector<std::string> optionNames() const {
    std::vector<std::string> names;
    for (CLI::App* app = app_; app != nullptr; app = app->get_parent()) {
      for (const CLI::Option* each : app->get_options()) {
        if (!given_.contains(each) && (app == app_ || each != app->get_help_ptr())) {
          const auto some = namesOf(*each);
          names.insert(names.end(), some.begin(), some.end());
        }
      }
    }
    return names;
  }

  static bool isShown(const CLI::App* app) { return !app->get_group().empty(); }

 private:
  void pass(const std::string& word) {
    if (awaited_ != nullptr) {
      keep(*awaited_, word);
    } else if (word == "--" && !isPositionalOnly_) {
      isPositionalOnly_ = true;
    } else if (word.size() > 1 && word.front() == '-' && !isPositionalOnly_) {
      passOption(word);
    } else if (isInside()) {
      ++places_;
    } else if (CLI::App* const next = subcommand(word)) {
      app_ = next;
    } else {
      isLost_ = true;
    }
  }
  CLI::App* subcommand(const std::string& name) {
    const auto found =
        app_->get_subcommands([&name](const CLI::App* each) { return each->check_name(name); });
    return found.empty() ? nullptr : found.front();
  }
  void passOption(const std::string& word) {
    const std::size_t equals = word.find('=');
    CLI::Option* const found = option(word.substr(0, equals));
    if (found == nullptr) {
      return;
    }
    given_.insert(found);
    if (equals != std::string::npos) {
      keep(*found, word.substr(equals + 1));
    } else if (takesValue(*found)) {
      awaited_ = found;
    }
  }
  void keep(const CLI::Option& option, const std::string& value) {
    values_[option.get_name()] = value;
    awaited_ = nullptr;
  }

  CLI::App* app_;
  CLI::Option* awaited_ = nullptr;
  std::size_t places_ = 0;
  bool isPositionalOnly_ = false;
  bool isLost_ = false;
  std::set<const CLI::Option*> given_;
  std::map<std::string, std::string> values_;
};

bool isWord(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isIdentifierLetter);
}

std::string wordOf(const Json& element, const char* member) {
  if (member == nullptr) {
    return plain(element);
  }
  const std::string text = textOf(element, member);
  return text.empty() ? numberTextOf(element, member) : text;
}

std::vector<std::string> askFor(const std::string& kind, const Ask& ask) {
  const auto* const source = std::find_if(
      kSources.begin(), kSources.end(), [&kind](const Source& each) { return each.kind == kind; });
  std::vector<std::string> words;
  if (source == kSources.end()) {
    return words;
  }
  if (const auto document = ask(source->target)) {
    for (const Json& each : listOf(*document, source->list)) {
      words.push_back(wordOf(each, source->member));
    }
  }
  std::erase_if(words, [](const std::string& word) { return !isWord(word); });
  return words;
}

class Completer {
 public:
  Completer(CLI::App& grammar, const std::vector<std::string>& typed, const Connect& connect)
      : walk_(grammar, typed), connect_(connect), current_(typed.empty() ? "" : typed.back()) {}

  Completion run() {
    const std::size_t equals = current_.find('=');
    if (walk_.isLost()) {
    } else if (CLI::Option* const awaited = walk_.awaited()) {
      addValues(*awaited, 0);
    } else if (walk_.canBeOption() && current_.starts_with("--") && equals != std::string::npos) {
      if (CLI::Option* const option = walk_.option(current_.substr(0, equals))) {
        addValues(*option, equals + 1);
      }
    } else if (walk_.canBeOption() && current_.starts_with('-')) {
      add(walk_.optionNames());
    } else if (!walk_.isInside()) {
      addNames();
    } else if (CLI::Option* const positional = walk_.positional()) {
      addValues(*positional, 0);
    }
    return std::move(completion_);
  }

 private:
  void addNames() {
    std::vector<std::string> names;
    for (const CLI::App* each : walk_.app().get_subcommands(Walk::isShown)) {
      names.push_back(each->get_name());
    }
    add(names);
  }
  /// `kept` bytes of the word come before the value.
  void addValues(CLI::Option& option, std::size_t kept) {
    const Offered what = offered(option);
    if (what.kind == kOfferFiles) {
      completion_.wantsFiles = true;
      return;
    }
    if (what.kind.empty()) {
      add(what.words, kept + afterLast(",", kept, option));
      return;
    }
    // Of several slots the last one is being typed: 1,3 or 1-3.
    const std::size_t own = what.kind == kOfferSlots ? afterLast(",-", kept, option) : 0;
    add(askFor(what.kind, connect_(walk_.value("--socket"), walk_.value("--config"))), kept + own);
  }
  std::size_t afterLast(const char* separators, std::size_t kept, const CLI::Option& option) const {
    const bool isList = option.get_delimiter() == ',' || option.get_name() == "SLOTS";
    const std::size_t last = isList ? current_.find_last_of(separators) : std::string::npos;
    return last == std::string::npos || last < kept ? 0 : last + 1 - kept;
  }
  void add(const std::vector<std::string>& words, std::size_t kept = 0) {
    for (const std::string& word : words) {
      std::string whole = current_.substr(0, kept) + word;
      if (whole.starts_with(current_)) {
        completion_.words.push_back(std::move(whole));
      }
    }
  }

  Walk walk_;
  const Connect& connect_;
  const std::string current_;
  Completion completion_;
};

}  // namespace

Completion complete(CLI::App& grammar, const std::vector<std::string>& typed,
                    const Connect& connect) {
  return Completer(grammar, typed, connect).run();
}

}  // namespace agctl
