// lspping: one program, one subcommand per task. main() only dispatches; each
// subcommand registers its options and its action in its own file.
#include <CLI/CLI.hpp>

#include "tools/DecodeCommand.h"

int main(int argc, char **argv) {
  CLI::App app{"Decodes MPLS LSP echo requests and replies."};
  app.require_subcommand(1);
  int status = 0;
  LspPingTool::addDecodeCommand(app, status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &e) {
    // --help is reported as a "parse error" of exit code 0.
    return app.exit(e) == 0 ? 0 : 1;
  }
  return status;
}
