#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "Kiv/TimerWheel.h"

namespace LspPingTool {

// A program run to its end on the event loop, its standard output and
// error read as they come through pipes that are readable descriptors of
// the loop: the loop goes on with its other work while the program runs.
// A program that outlives its time limit is killed by its pid, as is one
// still running when this goes.
class ChildProcess {
public:
  struct Result {
    // Why the program did not run to an exit status of its own ("No such
    // file or directory", "no end within 30 s: killed"); empty when it
    // did.
    std::string failure;
    int status = -1;
    std::string out;
    std::string err;
  };

  // Starts `argv` (the program found on PATH) with standard input from
  // /dev/null; `done` gets the result once the program has ended and both
  // pipes are drained, or at once when it cannot start. `done` may destroy
  // this.
  ChildProcess(Kiv::EventLoop &loop, const std::vector<std::string> &argv,
               double timeLimit, std::function<void(Result)> done);
  ChildProcess(const ChildProcess &) = delete;
  ChildProcess &operator=(const ChildProcess &) = delete;
  ~ChildProcess();

private:
  struct Pipe {
    int fd = -1;
    std::string *into = nullptr;
  };

  void drain(Pipe &pipe);
  void closePipe(Pipe &pipe);
  void reap();
  void expire();
  void finish();

  Kiv::EventLoop &loop_;
  std::function<void(Result)> done_;
  Result result_;
  Pipe out_;
  Pipe err_;
  pid_t pid_ = -1;
  double timeLimit_;
  Kiv::Timer deadline_;
  // Polls for the program's end once its pipes are closed.
  Kiv::Timer reaper_;
};

} // namespace LspPingTool
