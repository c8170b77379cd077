#include "agctl/Confirm.h"

#include <istream>
#include <ostream>

namespace agctl {

Outcome<void> confirm(const Session& session, const std::string& question) {
  if (session.options().yes) {
    return {};
  }
  const Console& console = session.console();
  if (!console.canAsk) {
    return tl::unexpected(Failure{ExitCode::kUsage,
                                  "this cannot be undone, and nobody can be asked",
                                  "say --yes if it is meant, or look first with --dry-run",
                                  {}});
  }
  console.err << "agctl: " << printable(question, console.errScreen.charset) << " [y/N] "
              << std::flush;
  std::string answer;
  std::getline(console.in, answer);
  if (answer == "y" || answer == "Y" || answer == "yes") {
    return {};
  }
  return tl::unexpected(Failure{ExitCode::kOther, "nothing was done", "", {}});
}

}  // namespace agctl
