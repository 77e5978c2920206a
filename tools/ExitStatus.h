#pragma once

namespace LspPingTool {

// What the program's exit status tells a script, the same in every
// subcommand: all went well, the network or the data said no (a frame that
// is no valid echo message, a request left unanswered), or the command
// could not do its job (a usage mistake, a file that cannot be read or
// written).
inline constexpr int exitOk = 0;
inline constexpr int exitNo = 1;
inline constexpr int exitError = 2;

} // namespace LspPingTool
