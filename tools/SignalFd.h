#pragma once

#include <csignal>
#include <functional>
#include <initializer_list>

#include "Kiv/EventLoop.h"

namespace LspPingTool {

// Delivers signals on the event loop, as a daemon's one thread wants them:
// while this lives the signals are blocked and read from a signalfd, and
// `onSignal` runs with each one's number between the loop's other work.
// Setup failures throw std::system_error, as the loop's own do.
class SignalFd {
public:
  SignalFd(Kiv::EventLoop &loop, std::initializer_list<int> signals,
           std::function<void(int)> onSignal);
  SignalFd(const SignalFd &) = delete;
  SignalFd &operator=(const SignalFd &) = delete;
  ~SignalFd();

private:
  void handleReadable();

  Kiv::EventLoop &loop_;
  std::function<void(int)> onSignal_;
  sigset_t blocked_;
  sigset_t before_;
  int fd_ = -1;
};

} // namespace LspPingTool
