// lspping: one program, one subcommand per task. main() only dispatches; each
// subcommand registers its options and its action in its own file.
#include <CLI/CLI.hpp>

#include <iostream>
#include <string>

#include "tools/CraftCommand.h"
#include "tools/DecodeCommand.h"
#include "tools/DemoCommand.h"
#include "tools/ExitStatus.h"
#include "tools/MonitorCommand.h"
#include "tools/PingCommand.h"
#include "tools/RespondCommand.h"
#include "tools/ResponderCommand.h"
#include "tools/StandardOutput.h"
#include "tools/StateCommand.h"

namespace {

// CLI11 takes a first word that names no subcommand for a missing
// subcommand; the user is told which word it did not know.
std::string unknownSubcommand(const CLI::App &app, int argc, char **argv) {
  if (argc < 2 || argv[1][0] == '-') {
    return "";
  }
  std::string names;
  const auto subcommands = app.get_subcommands({});
  for (std::size_t i = 0; i < subcommands.size(); ++i) {
    names += i == 0 ? "" : i + 1 == subcommands.size() ? " or " : ", ";
    names += subcommands[i]->get_name();
  }
  return "unknown subcommand '" + std::string(argv[1]) + "': expected " + names;
}

} // namespace

int main(int argc, char **argv) {
  LspPingTool::checkStandardOutput();
  CLI::App app{"Decodes and crafts MPLS LSP echo requests and replies, "
               "answers requests as a router would, from a capture or on this "
               "host's interfaces, and pings and traces LSPs from this host or "
               "through an in-process network."};
  app.set_version_flag("--version", "lspping " LSPPING_VERSION);
  app.footer("Exit status: 0 all went well, 1 the data said no (a frame that "
             "is no valid echo message, a request left unanswered), 2 a "
             "mistake on the command line or a file that cannot be read or "
             "written.");
  app.require_subcommand(1);
  // One line per error, naming the program.
  app.failure_message([](const CLI::App *, const CLI::Error &e) {
    return "lspping: " + std::string(e.what()) + " (see --help)\n";
  });
  int status = LspPingTool::exitOk;
  LspPingTool::addDecodeCommand(app, status);
  LspPingTool::addCraftCommand(app, status);
  LspPingTool::addRespondCommand(app, status);
  LspPingTool::addResponderCommand(app, status);
  LspPingTool::addStateCommand(app, status);
  LspPingTool::addPingCommands(app, status);
  LspPingTool::addMonitorCommand(app, status);
  LspPingTool::addDemoCommand(app, status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &e) {
    // --help and --version are "parse errors" of exit code 0.
    if (e.get_exit_code() != 0) {
      const std::string unknown = app.get_subcommands().empty()
                                      ? unknownSubcommand(app, argc, argv)
                                      : "";
      if (unknown.empty()) {
        app.exit(e);
      } else {
        std::cerr << "lspping: " << unknown << " (see --help)\n";
      }
      return LspPingTool::exitError;
    }
    app.exit(e);
  }
  if (const auto error = LspPingTool::standardOutputError()) {
    std::cerr << "lspping: " << *error << "\n";
    return LspPingTool::exitError;
  }
  return status;
}
