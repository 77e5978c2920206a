#pragma once

#include <unistd.h>

#include <utility>

namespace Wirx {

// Owns one file descriptor and closes it when it goes, so that a socket
// being set up is closed on every path that gives up half-way.
class LinuxFd {
public:
  LinuxFd() noexcept = default;
  explicit LinuxFd(int fd) noexcept : fd_(fd) {}
  LinuxFd(LinuxFd &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  LinuxFd &operator=(LinuxFd &&other) noexcept {
    if (this != &other) {
      reset();
      fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
  }
  LinuxFd(const LinuxFd &) = delete;
  LinuxFd &operator=(const LinuxFd &) = delete;
  ~LinuxFd() { reset(); }

  int get() const noexcept { return fd_; }
  bool operator!() const noexcept { return fd_ < 0; }
  void reset() noexcept {
    if (fd_ >= 0) {
      ::close(fd_);
      fd_ = -1;
    }
  }

private:
  int fd_ = -1;
};

} // namespace Wirx
