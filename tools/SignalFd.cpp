#include "tools/SignalFd.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace LspPingTool {

SignalFd::SignalFd(Kiv::EventLoop &loop, std::initializer_list<int> signals,
                   std::function<void(int)> onSignal)
    : loop_(loop), onSignal_(std::move(onSignal)) {
  sigemptyset(&blocked_);
  for (const int signal : signals) {
    sigaddset(&blocked_, signal);
  }
  sigprocmask(SIG_BLOCK, &blocked_, &before_);
  fd_ = signalfd(-1, &blocked_, SFD_NONBLOCK | SFD_CLOEXEC);
  if (fd_ < 0) {
    const int errnum = errno;
    sigprocmask(SIG_SETMASK, &before_, nullptr);
    throw std::system_error(errnum, std::generic_category(), "signalfd");
  }
  try {
    loop_.fdReadableIs(fd_, [this] { handleReadable(); });
  } catch (...) {
    close(fd_);
    sigprocmask(SIG_SETMASK, &before_, nullptr);
    throw;
  }
}

SignalFd::~SignalFd() {
  loop_.fdDel(fd_);
  close(fd_);
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

void SignalFd::handleReadable() {
  signalfd_siginfo info;
  while (read(fd_, &info, sizeof info) == ssize_t(sizeof info)) {
    onSignal_(int(info.ssi_signo));
  }
}

} // namespace LspPingTool
