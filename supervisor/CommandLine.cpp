#include "supervisor/CommandLine.h"

#include <CLI/CLI.hpp>

#include "framework/base/SvcConfigParams.h"
#include "supervisor/ExitCode.h"

#ifndef ZAN_VERSION
#error "the build names the version"
#endif

namespace supervisor {

std::variant<CommandLine, int> parseCommandLine(int argc, char** argv) {
  CommandLine line;
  std::string dumpFrom;
  CLI::App app("Supervisor of a chassis: runs the gateway and the management engine.", "zedd");
  app.add_option("--config", line.config, "configuration file (TOML)")->required();
  app.add_option("--set", line.overrides, "override one key of the file; may be repeated")
      ->type_name("KEY=VALUE")
      ->allow_extra_args(false);
  app.add_flag("--check-config", line.checkConfig, "check the configuration and exit");
  CLI::Option* dump = app.add_option("--dump-model", dumpFrom,
                                     "print the object tree, or the part of it that begins at DN, "
                                     "as JSON and exit; the supervisor may be running or not")
                          ->type_name("[DN]")
                          ->expected(0, 1);
  app.set_version_flag("--version", "zedd " ZAN_VERSION);
  app.footer("Example: zedd --config /etc/zedd/zedd.toml --set log.level=1\n\nKeys:\n" +
             base::SvcConfigParams::help());
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitOk : kExitUsage;
  }
  if (dump->count() > 0) {
    line.dumpModel = dumpFrom;
  }
  return line;
}

}  // namespace supervisor
