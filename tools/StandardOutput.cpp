#include "tools/StandardOutput.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <streambuf>

namespace LspPingTool {

namespace {

// A buffer in front of file descriptor 1. The first write that fails is
// remembered with its errno; what is given after it is dropped.
class StandardOutputBuf : public std::streambuf {
public:
  StandardOutputBuf() { setp(buffer_.data(), buffer_.data() + buffer_.size()); }

  int error() const { return error_; }

protected:
  int_type overflow(int_type c) override {
    if (!drain()) {
      return traits_type::eof();
    }
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(c);
      pbump(1);
    }
    return traits_type::not_eof(c);
  }

  int sync() override { return drain() ? 0 : -1; }

private:
  bool drain() {
    const char *next = pbase();
    while (error_ == 0 && next < pptr()) {
      const ssize_t written = ::write(1, next, pptr() - next);
      if (written >= 0) {
        next += written;
      } else if (errno != EINTR) {
        error_ = errno;
      }
    }
    setp(buffer_.data(), buffer_.data() + buffer_.size());
    return error_ == 0;
  }

  std::array<char, 65536> buffer_;
  int error_ = 0;
};

// Never destroyed: std::cout flushes it once more as the program exits.
StandardOutputBuf &standardOutput() {
  static StandardOutputBuf *const buf = new StandardOutputBuf;
  return *buf;
}

} // namespace

std::string inputName(const std::string &path) {
  return path == "-" ? "standard input" : path;
}

std::string outputName(const std::string &path) {
  return path == "-" ? "standard output" : path;
}

void checkStandardOutput() { std::cout.rdbuf(&standardOutput()); }

std::optional<std::string> standardOutputError() {
  std::cout.flush();
  const int error = standardOutput().error();
  if (error == 0) {
    return std::nullopt;
  }
  return "standard output: " + std::string(std::strerror(error));
}

} // namespace LspPingTool
