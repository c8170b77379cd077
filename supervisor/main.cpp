#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <variant>

#include "framework/base/SvcConfigParams.h"
#include "framework/core_log/LineText.h"
#include "supervisor/CommandLine.h"
#include "supervisor/DumpModel.h"
#include "supervisor/ExitCode.h"
#include "supervisor/Supervisor.h"

int main(int argc, char** argv) {
  using namespace supervisor;
  const auto parsed = parseCommandLine(argc, argv);
  if (const int* exitCode = std::get_if<int>(&parsed)) {
    return *exitCode;
  }
  const auto& line = std::get<CommandLine>(parsed);
  const auto loaded = base::SvcConfigParams::getInstance().load(line.config, line.overrides);
  if (!loaded) {
    std::cerr << "zedd: " << loaded.error() << '\n';
    return kExitUsage;
  }
  if (line.checkConfig) {
    std::cout << "zedd: configuration is in order\n";
    return kExitOk;
  }
  if (line.dumpModel) {
    const std::string stateDir = base::SvcConfigParams::getInstance().getStateDir().str();
    return dumpModel(stateDir, *line.dumpModel, std::cout, std::cerr);
  }
  try {
    Supervisor(line).run();
  } catch (const std::exception& error) {
    const std::string cause = error.what();  // a damaged file's content may be in it
    std::cerr << "zedd: " << core_log::escapeLine(cause, cause.size()) << std::endl;
    // Workers of the service may already run; nothing that they use is destroyed.
    std::_Exit(kExitFailed);
  }
}
