#include "supervisor/DumpModel.h"

#include <chrono>
#include <ostream>
#include <thread>

#include "dme/store/ModelReader.h"
#include "dme/store/StateLock.h"
#include "framework/core_log/LineText.h"
#include "supervisor/ExitCode.h"
#include "supervisor/admin/AdminClient.h"
#include "supervisor/admin/Json.h"
#include "supervisor/admin/ModelResource.h"
#include "supervisor/admin/Target.h"

namespace supervisor {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kAnswerWithin{30'000};
/// A supervisor opens its interface a moment after it has taken its state directory.
constexpr std::chrono::seconds kOpensWithin{5};
constexpr milliseconds kBetweenAttempts{50};

int fail(std::ostream& err, const std::string& cause, int exitCode = kExitFailed) {
  err << "zedd: " << core_log::escapeLine(cause, cause.size()) << std::endl;
  return exitCode;
}

int print(std::ostream& out, const std::string& text, std::ostream& err) {
  out << text << std::flush;
  return out ? kExitOk : fail(err, "standard output cannot be written to: free some space there");
}

int printAnswer(const admin::ClientResponse& answer, std::ostream& out, std::ostream& err) {
  if (answer.status == 200) {
    return print(out, answer.body, err);
  }
  const auto problem = admin::Json::parse(answer.body, nullptr, false);
  if (!problem.is_object()) {
    return fail(err, "the supervisor answered with status " + std::to_string(answer.status) +
                         ": install both from one release");
  }
  const std::string cause =
      problem.value("detail", "no detail") + ": " + problem.value("remedy", "see the log");
  const bool isUnknown = problem.value("type", "") == "/problems/unknown-object";
  return fail(err, cause, isUnknown ? kExitUnknown : kExitFailed);
}

int printObjects(const std::vector<dme::ObjectView>& objects, const std::string& dn,
                 std::ostream& out, std::ostream& err) {
  if (!objects.empty()) {
    return print(out, admin::renderModel(objects), err);
  }
  const admin::Problem problem = admin::unknownObject(dn);
  return fail(err, problem.detail + ": " + problem.remedy, kExitUnknown);
}

}  // namespace

int dumpModel(const std::string& stateDir, const std::string& dn, std::ostream& out,
              std::ostream& err) {
  const std::string target = "/api/v1/model?dn=" + admin::escapeQueryValue(dn);
  std::string cause;
  const auto deadline = std::chrono::steady_clock::now() + kOpensWithin;
  while (std::chrono::steady_clock::now() < deadline) {
    const auto read = dme::readStoppedModel(stateDir, mo::Dn(dn));
    if (!read) {
      return fail(err, read.error().text);
    }
    if (*read) {
      return printObjects(**read, dn, out, err);
    }
    const auto answer = admin::get(stateDir, target, kAnswerWithin);
    if (answer) {
      return printAnswer(*answer, out, err);
    }
    cause = answer.error();
    std::this_thread::sleep_for(kBetweenAttempts);
  }
  return fail(err, stateDir + " is in use by " + dme::StateLock::holder(stateDir) +
                       ", which does not answer (" + cause +
                       "): ask as the user that it runs as, or look into its log");
}

}  // namespace supervisor
