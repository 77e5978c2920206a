#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Kiv/TimerWheel.h"
#include "Orv/Export.h"

namespace Kiv {

// A Linux event loop: epoll for readable file descriptors and one timerfd
// that sleeps until the wheel's earliest timer. The timerfd is set on
// CLOCK_REALTIME to the absolute minimum time, as Orv::now() reads that clock
// by default, so no offset between two clocks has to be kept; it is told to
// wake when the clock is set, and then follows the clock to its new time.
// It runs on the system clock: under a virtual clock, VirtualTime drives the
// wheel instead. Setup errors (creating the loop, adding a descriptor) are
// thrown as std::system_error; the loop itself does not throw.
class LSPPING_EXPORT EventLoop {
public:
  explicit EventLoop(Orv::Ptr<TimerWheel> wheel = Orv::make<TimerWheel>());
  EventLoop(const EventLoop &) = delete;
  EventLoop &operator=(const EventLoop &) = delete;
  ~EventLoop();

  TimerWheel &wheel() const { return *wheel_; }

  // Calls `onReadable` whenever `fd` is readable, at its end or in error
  // (level-triggered), until fdDel. A second call for the same descriptor
  // replaces the callback. Callbacks may add and delete descriptors, their
  // own included.
  void fdReadableIs(int fd, std::function<void()> onReadable);
  // The same for `fd` being writable, in place of readable: a descriptor is
  // watched one way at a time, the last call deciding which.
  void fdWritableIs(int fd, std::function<void()> onWritable);
  // Forgets `fd`; before or after closing it.
  void fdDel(int fd);

  // Waits at most `timeout` seconds (for ever when negative) for readable
  // descriptors or the wheel's earliest timer, calls the callbacks of the
  // readable ones, then fires the expired timers.
  void runOnce(double timeout);
  // Runs until a callback calls stop().
  void run();
  // Runs for `seconds` on Orv::now()'s clock, or until stop().
  void runFor(double seconds);
  void stop() { stopped_ = true; }

private:
  struct Watch {
    std::function<void()> onReady;
    Orv::U32 generation;
    Orv::U32 events;
  };

  void fdWatchIs(int fd, Orv::U32 events, std::function<void()> onReady);
  void timerFdUpdate() noexcept;
  void timerFdDrain() noexcept;
  void retire(std::unique_ptr<Watch> watch);

  Orv::Ptr<TimerWheel> wheel_;
  int epollFd_ = -1;
  int timerFd_ = -1;
  // The minimum time the timerfd is set to; NaN forces the next update.
  double timerFdTime_;
  // By descriptor. An entry replaced or deleted while callbacks run is kept
  // in `retired_` until they are over, as it may be the one running.
  std::vector<std::unique_ptr<Watch>> watches_;
  std::vector<std::unique_ptr<Watch>> retired_;
  Orv::U32 generation_ = 0;
  bool dispatching_ = false;
  bool stopped_ = false;
};

} // namespace Kiv
