#include <optional>

#include "framework/msglyr/Message.h"
#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/QuietChannel.h"
#include "serviceOrchAG/bridge/ClientMap.h"

// A stimulus that arrives from the engine, through the callbacks that the service registers. What
// it makes the service send to a blade is a command with a document.

namespace fuzz {
namespace {

void checkCommand(const msglyr::Message& command) {
  check(command.getnumParts() == 5, "a command has five parts");
  check(command[0].starts_with("sma_slot3."), "a command goes to the blade that has a client",
        command[0]);
  check(command[1] == "nox-xml:1" && command[3] == "serviceOrchAG",
        "a command says what it is and who sends it");
  noxxml::XMLConverter converter;
  check(converter.xmlDeserialize(command[4]) != nullptr, "a command's document parses", command[4]);
}

}  // namespace

void runInbound(Input input) {
  const Manner manner = takeManner(input);
  Gateway gateway(manner);
  QuietChannel::instance().refuseAddresses(false);
  zan_serviceOrchAG::createSMAClient("3", "127.0.0.1", "1", true);
  QuietChannel::instance().answerClients(
      manner == Manner::kSilent ? std::nullopt : std::optional(msglyr::Message(5)));
  gateway.receive(input);
  const auto commands = QuietChannel::instance().takeCommands();
  check(commands.size() <= 1, "a stimulus leads to one command at most");
  for (const msglyr::Message& command : commands) {
    checkCommand(command);
  }
}

}  // namespace fuzz
