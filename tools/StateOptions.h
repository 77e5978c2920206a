#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "tools/StateSource.h"

namespace LspPingTool {

// Where a command reads a router's forwarding state: a state file, sources
// (FRR, the kernel), or both, the file's entries winning.
struct StateOptions {
  std::string file;
  std::vector<StateSource> sources;

  bool empty() const { return file.empty() && sources.empty(); }
};

// Checks a SOURCE as StateSource::fromString() reads it.
CLI::Validator stateSourceCheck();

// Adds `--state FILE` and `SOURCE_OPTION SOURCE` (repeatable) to `cmd`,
// each source checked as it is read.
void addStateOptions(CLI::App &cmd, StateOptions &options,
                     const std::string &sourceOption);

} // namespace LspPingTool
