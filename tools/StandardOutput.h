#pragma once

#include <optional>
#include <string>

namespace LspPingTool {

// How messages name a file of the command line, where "-" stands for
// standard input or output.
std::string inputName(const std::string &path);
std::string outputName(const std::string &path);

// Sends what std::cout is given to standard output through a buffer that
// keeps the reason of a write that fails. Called once, before any output.
void checkStandardOutput();

// Flushes std::cout and tells whether all that was written to it got
// through; if not, why, in the form of an error line: "standard output:
// REASON".
std::optional<std::string> standardOutputError();

} // namespace LspPingTool
