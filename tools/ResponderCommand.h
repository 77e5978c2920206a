#pragma once

#include <CLI/CLI.hpp>

namespace LspPingTool {

// Adds `responder [--state FILE] [--state-from SOURCE]... [--state-refresh
// S] [-I IF]... [--rate N] [--burst N] [--json] [-v] [--reply-source
// ADDR]...`, the daemon that answers echo requests on this Linux host's
// interfaces (ResponderDaemon). When it ends it sets `status` to the
// program's exit status.
void addResponderCommand(CLI::App &app, int &status);

} // namespace LspPingTool
