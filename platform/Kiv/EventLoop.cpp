#include "Kiv/EventLoop.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>
#include <system_error>
#include <utility>

#include "Orv/Assert.h"
#include "Orv/Clock.h"

namespace Kiv {

namespace {

// The epoll key of the timerfd; a descriptor's key is its number and the
// generation of its watch, which a descriptor never reaches.
constexpr Orv::U64 timerKey = ~Orv::U64(0);
constexpr int eventsPerWait = 64;
// Later than the kernel's timers reach (year 2262); they saturate there.
constexpr double farSeconds = 1e12;

Orv::U64 keyOf(int fd, Orv::U32 generation) {
  return Orv::U64(Orv::U32(fd)) | Orv::U64(generation) << 32;
}

[[noreturn]] void throwErrno(const char *what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// The absolute time of `seconds`, rounded up to the nanosecond so that the
// wake-up is never before it; never zero, which would disarm the timerfd.
timespec timespecOf(double seconds) {
  if (!(seconds > 0.0)) {
    return {0, 1};
  }
  seconds = std::min(seconds, farSeconds);
  const double whole = std::floor(seconds);
  auto sec = time_t(whole);
  auto nsec = long(std::ceil((seconds - whole) * 1e9));
  if (nsec >= 1000000000L) {
    ++sec;
    nsec -= 1000000000L;
  }
  return {sec, nsec};
}

} // namespace

EventLoop::EventLoop(Orv::Ptr<TimerWheel> wheel)
    : wheel_(std::move(wheel)),
      timerFdTime_(std::numeric_limits<double>::quiet_NaN()) {
  epollFd_ = epoll_create1(EPOLL_CLOEXEC);
  if (epollFd_ < 0) {
    throwErrno("epoll_create1");
  }
  timerFd_ = timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = timerKey;
  if (timerFd_ < 0 ||
      epoll_ctl(epollFd_, EPOLL_CTL_ADD, timerFd_, &event) != 0) {
    const int error = errno;
    if (timerFd_ >= 0) {
      close(timerFd_);
    }
    close(epollFd_);
    throw std::system_error(error, std::generic_category(),
                            "timerfd for the event loop");
  }
}

EventLoop::~EventLoop() {
  close(timerFd_);
  close(epollFd_);
}

void EventLoop::retire(std::unique_ptr<Watch> watch) {
  if (dispatching_) {
    retired_.push_back(std::move(watch));
  }
}

void EventLoop::fdReadableIs(int fd, std::function<void()> onReadable) {
  fdWatchIs(fd, EPOLLIN, std::move(onReadable));
}

void EventLoop::fdWritableIs(int fd, std::function<void()> onWritable) {
  fdWatchIs(fd, EPOLLOUT, std::move(onWritable));
}

void EventLoop::fdWatchIs(int fd, Orv::U32 events,
                          std::function<void()> onReady) {
  if (fd >= 0 && std::size_t(fd) < watches_.size() && watches_[fd]) {
    const Orv::U32 generation = watches_[fd]->generation;
    if (watches_[fd]->events != events) {
      epoll_event event{};
      event.events = events;
      event.data.u64 = keyOf(fd, generation);
      if (epoll_ctl(epollFd_, EPOLL_CTL_MOD, fd, &event) != 0) {
        throwErrno("epoll_ctl mod");
      }
    }
    retire(std::exchange(watches_[fd],
                         std::make_unique<Watch>(
                             Watch{std::move(onReady), generation, events})));
    return;
  }
  const Orv::U32 generation = ++generation_;
  epoll_event event{};
  event.events = events;
  event.data.u64 = keyOf(fd, generation);
  if (epoll_ctl(epollFd_, EPOLL_CTL_ADD, fd, &event) != 0) {
    throwErrno("epoll_ctl add");
  }
  if (std::size_t(fd) >= watches_.size()) {
    watches_.resize(std::size_t(fd) + 1);
  }
  watches_[fd] =
      std::make_unique<Watch>(Watch{std::move(onReady), generation, events});
}

void EventLoop::fdDel(int fd) {
  if (fd < 0 || std::size_t(fd) >= watches_.size() || !watches_[fd]) {
    return;
  }
  // Fails harmlessly when the descriptor is already closed: closing took it
  // out of the epoll set.
  epoll_ctl(epollFd_, EPOLL_CTL_DEL, fd, nullptr);
  retire(std::move(watches_[fd]));
}

void EventLoop::timerFdUpdate() noexcept {
  const double next = wheel_->nextTimeMin();
  if (next == timerFdTime_) {
    return;
  }
  itimerspec expiry{};
  int flags = 0;
  if (next != Timer::never) {
    expiry.it_value = timespecOf(next);
    flags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
  }
  const int rc = timerfd_settime(timerFd_, flags, &expiry, nullptr);
  ORV_ASSERT(rc == 0);
  timerFdTime_ = next;
}

void EventLoop::timerFdDrain() noexcept {
  // An expiry count, or ECANCELED when the clock was set; either way the
  // timerfd is set again before the next wait.
  Orv::U64 expirations;
  while (read(timerFd_, &expirations, sizeof expirations) > 0) {
  }
  timerFdTime_ = std::numeric_limits<double>::quiet_NaN();
}

void EventLoop::runOnce(double timeout) {
  timerFdUpdate();
  const int timeoutMs =
      timeout < 0.0 ? -1 : int(std::min(std::ceil(timeout * 1e3), 1e9));
  epoll_event events[eventsPerWait];
  int count = epoll_wait(epollFd_, events, eventsPerWait, timeoutMs);
  if (count < 0) {
    ORV_ASSERT(errno == EINTR);
    count = 0;
  }
  struct DispatchEnd {
    EventLoop &loop;
    ~DispatchEnd() {
      loop.dispatching_ = false;
      loop.retired_.clear();
    }
  } dispatchEnd{*this};
  dispatching_ = true;
  for (int i = 0; i < count; ++i) {
    const Orv::U64 key = events[i].data.u64;
    if (key == timerKey) {
      timerFdDrain();
      continue;
    }
    const auto fd = std::size_t(key & 0xffffffffu);
    const auto generation = Orv::U32(key >> 32);
    // A watch deleted, or deleted and added anew, by an earlier callback of
    // this batch is not called for the stale event.
    if (fd < watches_.size() && watches_[fd] &&
        watches_[fd]->generation == generation) {
      watches_[fd]->onReady();
    }
  }
  wheel_->fireExpired();
}

void EventLoop::run() {
  stopped_ = false;
  while (!stopped_) {
    runOnce(-1.0);
  }
}

void EventLoop::runFor(double seconds) {
  stopped_ = false;
  Timer end(*wheel_, [this] { stopped_ = true; });
  end.timeMinIs(Orv::now() + seconds);
  while (!stopped_) {
    runOnce(-1.0);
  }
}

} // namespace Kiv
