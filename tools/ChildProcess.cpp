#include "tools/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "Orv/Clock.h"

extern char **environ;

namespace LspPingTool {

namespace {

// More than any answer a program of ours is asked for.
constexpr std::size_t maxOutput = std::size_t(256) << 20;
// How often the end of a program whose pipes have closed is looked for.
constexpr double reapInterval = 0.001;

std::string errnoText(const std::string &what, int errnum) {
  return what + ": " + std::strerror(errnum);
}

} // namespace

ChildProcess::ChildProcess(Kiv::EventLoop &loop,
                           const std::vector<std::string> &argv,
                           double timeLimit, std::function<void(Result)> done)
    : loop_(loop), done_(std::move(done)), timeLimit_(timeLimit),
      deadline_(loop.wheel(), [this] { expire(); }),
      reaper_(loop.wheel(), [this] { reap(); }) {
  out_.into = &result_.out;
  err_.into = &result_.err;
  int outPipe[2] = {-1, -1};
  int errPipe[2] = {-1, -1};
  if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0) {
    result_.failure = errnoText("pipe", errno);
  } else {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], 2);
    // A daemon blocks the signals it reads from a signalfd and ignores
    // SIGPIPE; the program gets the defaults.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    sigset_t defaults;
    sigemptyset(&defaults);
    for (const int signal : {SIGPIPE, SIGHUP, SIGINT, SIGTERM, SIGUSR1}) {
      sigaddset(&defaults, signal);
    }
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::vector<char *> args;
    for (const std::string &arg : argv) {
      args.push_back(const_cast<char *>(arg.c_str()));
    }
    args.push_back(nullptr);
    const int error = posix_spawnp(&pid_, args[0], &actions, &attributes,
                                   args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
      pid_ = -1;
      result_.failure = std::strerror(error);
    }
  }
  for (int *ends : {outPipe, errPipe}) {
    if (ends[1] >= 0) {
      close(ends[1]);
    }
  }
  if (!result_.failure.empty()) {
    for (const int fd : {outPipe[0], errPipe[0]}) {
      if (fd >= 0) {
        close(fd);
      }
    }
    // Told from the loop, as `done` may destroy this.
    reaper_.timeMinIs(Orv::now());
    return;
  }
  for (const auto &[into, fd] :
       {std::pair{&out_, outPipe[0]}, {&err_, errPipe[0]}}) {
    Pipe *pipe = into;
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    pipe->fd = fd;
    loop_.fdReadableIs(fd, [this, pipe] { drain(*pipe); });
  }
  deadline_.timeMinIs(Orv::now() + timeLimit_);
}

ChildProcess::~ChildProcess() {
  closePipe(out_);
  closePipe(err_);
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

void ChildProcess::drain(Pipe &pipe) {
  char buffer[65536];
  for (;;) {
    const ssize_t n = read(pipe.fd, buffer, sizeof buffer);
    if (n > 0) {
      pipe.into->append(buffer, std::size_t(n));
      if (pipe.into->size() > maxOutput) {
        result_.failure =
            "more than " + std::to_string(maxOutput >> 20) + " MiB of output";
        expire();
        return;
      }
      continue;
    }
    if (n < 0 && errno == EINTR) {
      continue;
    }
    if (n < 0 && errno == EAGAIN) {
      return;
    }
    closePipe(pipe);
    if (out_.fd < 0 && err_.fd < 0) {
      reap();
    }
    return;
  }
}

void ChildProcess::closePipe(Pipe &pipe) {
  if (pipe.fd >= 0) {
    loop_.fdDel(pipe.fd);
    close(pipe.fd);
    pipe.fd = -1;
  }
}

void ChildProcess::reap() {
  if (pid_ > 0) {
    int status = 0;
    const pid_t ended = waitpid(pid_, &status, WNOHANG);
    if (ended == 0) {
      reaper_.timeMinIs(Orv::now() + reapInterval);
      return;
    }
    pid_ = -1;
    if (ended < 0) {
      result_.failure = errnoText("waitpid", errno);
    } else if (WIFEXITED(status)) {
      result_.status = WEXITSTATUS(status);
    } else {
      result_.failure =
          std::string("killed by signal ") + strsignal(WTERMSIG(status));
    }
  }
  finish();
}

void ChildProcess::expire() {
  if (result_.failure.empty()) {
    result_.failure =
        "no end within " + std::to_string(int(timeLimit_)) + " s: killed";
  }
  closePipe(out_);
  closePipe(err_);
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }
  finish();
}

void ChildProcess::finish() {
  if (!done_) {
    return;
  }
  deadline_.timeMinIs(Kiv::Timer::never);
  reaper_.timeMinIs(Kiv::Timer::never);
  // Last: `done` may destroy this.
  const auto done = std::move(done_);
  done(std::move(result_));
}

} // namespace LspPingTool
