#pragma once

#include <CLI/CLI.hpp>

namespace LspPingTool {

// Adds `state [--from SOURCE]... [--state FILE] [--json]`, which reads a
// router's forwarding state as the responder does (readState) and
// prints it, one line per entry or as a state file. When it runs it sets
// `status` to the program's exit status.
void addStateCommand(CLI::App &app, int &status);

} // namespace LspPingTool
