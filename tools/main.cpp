// lspping: one program, one subcommand per task. main() only dispatches; each
// subcommand registers its options and its action in its own file.
#include <CLI/CLI.hpp>

#include "tools/CraftCommand.h"
#include "tools/DecodeCommand.h"
#include "tools/DemoCommand.h"
#include "tools/RespondCommand.h"

int main(int argc, char **argv) {
  CLI::App app{"Decodes and crafts MPLS LSP echo requests and replies, "
               "answers requests as a router would, and pings through an "
               "in-process network."};
  app.require_subcommand(1);
  // One line per error, naming the program; subcommands take this over when
  // they are added.
  app.failure_message([](const CLI::App *, const CLI::Error &e) {
    return "lspping: " + std::string(e.what()) + " (see --help)\n";
  });
  int status = 0;
  LspPingTool::addDecodeCommand(app, status);
  LspPingTool::addCraftCommand(app, status);
  LspPingTool::addRespondCommand(app, status);
  LspPingTool::addDemoCommand(app, status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &e) {
    // --help is reported as a "parse error" of exit code 0.
    return app.exit(e) == 0 ? 0 : 1;
  }
  return status;
}
