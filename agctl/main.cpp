#include <unistd.h>

#include <exception>
#include <iostream>
#include <string>
#include <variant>
#include <vector>

#include "agctl/CommandLine.h"
#include "agctl/CurlExchanges.h"
#include "agctl/Endpoint.h"
#include "agctl/Interrupt.h"

namespace {

using namespace agctl;

constexpr std::chrono::milliseconds kAnswerWithin{30'000};

Console openConsole() {
  Console console{std::cout, std::cerr, std::cin};
  console.outScreen = Screen::of(STDOUT_FILENO);
  console.errScreen = Screen::of(STDERR_FILENO);
  console.canAsk = console.errScreen.isTerminal && ::isatty(STDIN_FILENO) != 0;
  return console;
}

ExitCode run(const CommandLine& line) {
  const auto socket = socketPath(line.options.socket, line.options.config);
  if (!socket) {
    std::cerr << "agctl: " << socket.error() << "\nagctl: remedy: name zedd's configuration file "
              << "with --config, or its socket with --socket" << std::endl;
    return ExitCode::kUsage;
  }
  Interrupt interrupt;
  CurlExchanges exchanges(*socket, interrupt.descriptor());
  const auto within = line.options.timeout ? toMilliseconds(*line.options.timeout) : kAnswerWithin;
  const auto interrupts = [&interrupt] {
    return interrupt.count();
  };
  Session session(line.options, openConsole(), Server(exchanges, *socket, within, interrupts),
                  interrupts);
  return line.action(session);
}

ExitCode runGuarded(const CommandLine& line) {
  try {
    const ExitCode code = run(line);
    if (std::cout.flush()) {
      return code;
    }
    std::cerr << "agctl: standard output cannot be written to: free some space there" << std::endl;
    return worse(code, ExitCode::kOther);
  } catch (const std::exception& error) {
    std::cerr << "agctl: " << error.what() << std::endl;
    return ExitCode::kOther;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto parsed = parseCommandLine({argv + 1, argv + argc}, std::cout, std::cerr);
  const auto* code = std::get_if<ExitCode>(&parsed);
  return static_cast<int>(code != nullptr ? *code : runGuarded(std::get<CommandLine>(parsed)));
}
