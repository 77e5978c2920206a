#pragma once

#include <CLI/CLI.hpp>

namespace LspPingTool {

// Adds `demo`, which runs LSP pings through an in-process network of two
// routers, each hosting the library's ping client and echo responder, on
// virtual time, and prints what ping prints: a line per reply, then a
// summary. One LSP is healthy, one broken. When it runs it sets `status` to
// the program's exit status.
void addDemoCommand(CLI::App &app, int &status);

} // namespace LspPingTool
