#pragma once

// Network namespaces for tests: created with names unique to the run,
// deleted (with the veths in them) when the test lets go of them, even when
// it fails. Tests that need them call netnsUnavailable() first and skip
// with its message; with LSPPING_REQUIRE_NETNS=1 in the environment (CI)
// they fail instead.
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

extern char **environ;

namespace LspPingTest {

// Runs a program found on PATH with `args`; its exit status, or -1.
inline int runProgram(const std::vector<std::string> &args) {
  std::vector<char *> argv;
  for (const std::string &arg : args) {
    argv.push_back(const_cast<char *>(arg.c_str()));
  }
  argv.push_back(nullptr);
  pid_t pid;
  if (posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), environ) !=
      0) {
    return -1;
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A name no other run of any test uses: "PREFIX<pid>x<n>", short enough
// for an interface (at most 15 characters for a prefix of up to 3).
inline std::string uniqueName(const std::string &prefix) {
  static int count = 0;
  return prefix + std::to_string(::getpid() % 1000000) + "x" +
         std::to_string(count++);
}

class Netns {
public:
  Netns() : name_(uniqueName("lt")) {
    created_ = runProgram({"ip", "netns", "add", name_}) == 0;
  }
  Netns(const Netns &) = delete;
  Netns &operator=(const Netns &) = delete;
  ~Netns() {
    if (created_) {
      runProgram({"ip", "netns", "del", name_});
    }
  }

  const std::string &name() const { return name_; }
  bool created() const { return created_; }

  // Runs `ip ARGS...` in the namespace; true when it succeeded.
  bool ip(std::vector<std::string> args) const {
    args.insert(args.begin(), {"ip", "-n", name_});
    return runProgram(args) == 0;
  }
  // Runs a program in the namespace; true when it succeeded.
  bool exec(std::vector<std::string> args) const {
    args.insert(args.begin(), {"ip", "netns", "exec", name_});
    return runProgram(args) == 0;
  }

private:
  std::string name_;
  bool created_ = false;
};

// While it lives, the calling thread is in the namespace: sockets opened
// then stay in it for good.
class NetnsScope {
public:
  explicit NetnsScope(const Netns &netns)
      : home_(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)) {
    const int target =
        ::open(("/run/netns/" + netns.name()).c_str(), O_RDONLY | O_CLOEXEC);
    entered_ = target >= 0 && home_ >= 0 && ::setns(target, CLONE_NEWNET) == 0;
    if (target >= 0) {
      ::close(target);
    }
  }
  NetnsScope(const NetnsScope &) = delete;
  NetnsScope &operator=(const NetnsScope &) = delete;
  ~NetnsScope() {
    if (entered_) {
      ::setns(home_, CLONE_NEWNET);
    }
    if (home_ >= 0) {
      ::close(home_);
    }
  }
  bool entered() const { return entered_; }

private:
  int home_;
  bool entered_ = false;
};

// A program running in a namespace, its standard output and error read
// line by line through pipes. Killed, by its pid, if it still runs when
// the test lets go of it.
class NetnsProcess {
public:
  NetnsProcess(const Netns &netns, std::vector<std::string> args) {
    int out[2], err[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) {
      return;
    }
    args.insert(args.begin(), {"ip", "netns", "exec", netns.name()});
    std::vector<char *> argv;
    for (std::string &arg : args) {
      argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    // `ip netns exec` execs the program: the pid is the program's.
    if (posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), environ) !=
        0) {
      pid_ = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    ::close(err[1]);
    fds_[0] = out[0];
    fds_[1] = err[0];
  }
  NetnsProcess(const NetnsProcess &) = delete;
  NetnsProcess &operator=(const NetnsProcess &) = delete;
  ~NetnsProcess() {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      exitStatus();
    }
    for (const int fd : fds_) {
      if (fd >= 0) {
        ::close(fd);
      }
    }
  }

  bool started() const { return pid_ > 0; }
  pid_t pid() const { return pid_; }
  void signal(int signal) const { ::kill(pid_, signal); }

  // The next line of standard output (0) or error (1), or none when the
  // stream ends or `limit` seconds pass first.
  std::optional<std::string> line(int stream, double limit = 5.0) {
    std::string &buffered = buffered_[stream];
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::duration<double>(limit);
    for (;;) {
      if (const auto at = buffered.find('\n'); at != std::string::npos) {
        std::string line = buffered.substr(0, at);
        buffered.erase(0, at + 1);
        return line;
      }
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          end - std::chrono::steady_clock::now());
      pollfd pfd{fds_[stream], POLLIN, 0};
      if (left.count() <= 0 || ::poll(&pfd, 1, int(left.count())) <= 0) {
        return std::nullopt;
      }
      char chunk[4096];
      const ssize_t n = ::read(fds_[stream], chunk, sizeof chunk);
      if (n <= 0) {
        return std::nullopt;
      }
      buffered.append(chunk, std::size_t(n));
    }
  }
  // The next line of the stream holding `text`, skipping the others.
  std::optional<std::string> lineWith(int stream, const std::string &text,
                                      double limit = 5.0) {
    while (auto next = line(stream, limit)) {
      if (next->find(text) != std::string::npos) {
        return next;
      }
    }
    return std::nullopt;
  }

  // Waits for the program's end: its exit status, -1 when a signal ended it.
  int exitStatus() {
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

private:
  pid_t pid_ = -1;
  int fds_[2] = {-1, -1};
  std::string buffered_[2];
};

// Why namespace tests cannot run here, or empty when they can.
inline std::string netnsUnavailable() {
  if (::geteuid() != 0) {
    return "needs root: network namespaces, veths and raw sockets";
  }
  const Netns probe;
  if (!probe.created()) {
    return "'ip netns add' failed: network namespaces unavailable";
  }
  return "";
}

inline bool netnsRequired() {
  const char *required = std::getenv("LSPPING_REQUIRE_NETNS");
  return required != nullptr && std::string(required) == "1";
}

// Turns the loop until `done()` or, failing that, for at most `limit`
// seconds: a bound for a broken build, never a measurement.
template <class Loop, class Done>
bool runUntil(Loop &loop, Done done, double limit = 5.0) {
  const auto end =
      std::chrono::steady_clock::now() + std::chrono::duration<double>(limit);
  while (!done()) {
    if (std::chrono::steady_clock::now() >= end) {
      return false;
    }
    loop.runOnce(0.05);
  }
  return true;
}

} // namespace LspPingTest

// Skips the test, or fails it where namespaces are required, when they
// cannot be had.
#define LSPPING_NEED_NETNS()                                                   \
  do {                                                                         \
    const std::string why = LspPingTest::netnsUnavailable();                   \
    if (!why.empty()) {                                                        \
      if (LspPingTest::netnsRequired()) {                                      \
        FAIL() << why;                                                         \
      }                                                                        \
      GTEST_SKIP() << why;                                                     \
    }                                                                          \
  } while (0)
