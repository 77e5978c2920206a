#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/wait.h>

namespace LspPingTest {

struct ProgramRun {
  int status = -1;
  std::string output;
};

// Runs a shell command line and collects its standard output.
inline ProgramRun runCommand(const std::string &commandLine) {
  ProgramRun run;
  FILE *pipe = popen(commandLine.c_str(), "r");
  if (pipe == nullptr) {
    return run;
  }
  char buf[4096];
  std::size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) {
    run.output.append(buf, n);
  }
  const int rc = pclose(pipe);
  run.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
  return run;
}

// Runs the built lspping program with `args`, a shell-quoted argument list.
inline ProgramRun runLspping(const std::string &args) {
  return runCommand("'" + std::string(LSPPING_PROGRAM) + "' " + args);
}

inline std::string quoted(const std::filesystem::path &path) {
  return "'" + path.string() + "'";
}

} // namespace LspPingTest
