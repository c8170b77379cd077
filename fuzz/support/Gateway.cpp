#include "fuzz/support/Gateway.h"

#include <optional>

#include "framework/base/SvcConfigParams.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/InstantClock.h"
#include "fuzz/support/QuietChannel.h"
#include "fuzz/support/Refusal.h"
#include "serviceOrchAG/svc/Registration.h"

namespace fuzz {
namespace {

void setUpProcess() {
  zan_serviceOrchAG::registerCallbacks();
  const std::string settings[] = {"supervisor.state_dir=/tmp", "supervisor.host_key=/dev/null"};
  const auto outcome = base::SvcConfigParams::getInstance().loadText("", "fuzz", settings);
  check(outcome.has_value(), "the configuration is good", outcome ? "" : outcome.error());
  InstantClock::install();
}

}  // namespace

Gateway::Gateway(Manner manner) : engine_(manner) {
  [[maybe_unused]] static const bool isSetUp = (setUpProcess(), true);
  QuietChannel::instance().refuseAddresses(manner == Manner::kRefusesAddress);
  QuietChannel::instance().answerClients(std::nullopt);
  QuietChannel::instance().takeCommands();
  handler_.registerCommands();
}

Gateway::~Gateway() {
  check(handler_.waitingCookies() == 0, "no entry stays pending");
  { const test_support::RegistryCleaner cleaner; }
  check(QuietChannel::instance().clients() == 0, "every channel to a blade belongs to a client");
}

std::unique_ptr<Response> Gateway::handle(MsgHandler::Handler handler, const std::string& document,
                                          const std::string& action) {
  try {
    return std::unique_ptr<Response>((handler_.*handler)("message-1", action, document, kSlot));
  } catch (const Refusal&) {
    hasDropped_ = true;
    return nullptr;
  }
}

void Gateway::receive(Input stimulus) {
  const bool isCarriedOut = engine_.handle(stimulus.data(), stimulus.size());
  const proc::Svc::Refused refused = engine_.refused();
  check(refused.undecodable + refused.unhandled + refused.overflow <= (isCarriedOut ? 0U : 1U),
        "what arrives is carried out or refused once");
}

}  // namespace fuzz
