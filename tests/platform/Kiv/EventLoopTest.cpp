#include <gtest/gtest.h>

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "Kiv/EventLoop.h"
#include "Orv/Clock.h"

namespace {

// An eventfd, closed at the end of the test.
struct EventFd {
  EventFd() : fd(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
  ~EventFd() { close(fd); }
  void signal() const {
    const Orv::U64 one = 1;
    EXPECT_EQ(write(fd, &one, sizeof one), ssize_t(sizeof one));
  }
  void drain() const {
    Orv::U64 count;
    EXPECT_EQ(read(fd, &count, sizeof count), ssize_t(sizeof count));
  }
  int fd;
};

TEST(EventLoop, TimersAndReadableDescriptorsRunInTheirOrder) {
  Kiv::EventLoop loop;
  std::vector<std::string> log;
  EventFd event;
  const double start = Orv::now();
  // Each timer checks that it is not early: an order of two times, not a
  // duration. What a slow machine may reorder (the descriptor against the
  // second timer) is left out of the expected order.
  Kiv::Timer second(loop.wheel(), [&] {
    log.push_back("second");
    EXPECT_GE(Orv::now(), start + 0.02);
  });
  Kiv::Timer first(loop.wheel(), [&] {
    log.push_back("first");
    EXPECT_GE(Orv::now(), start + 0.01);
    event.signal();
  });
  Kiv::Timer last(loop.wheel(), [&] {
    log.push_back("last");
    EXPECT_GE(Orv::now(), start + 0.03);
    loop.stop();
  });
  loop.fdReadableIs(event.fd, [&] {
    log.push_back("readable");
    event.drain();
    last.timeMinIs(start + 0.03);
  });
  second.timeMinIs(start + 0.02);
  first.timeMinIs(start + 0.01);
  loop.run();
  ASSERT_EQ(log.size(), 4u);
  std::vector<std::string> timers;
  std::copy_if(log.begin(), log.end(), std::back_inserter(timers),
               [](const std::string &entry) { return entry != "readable"; });
  EXPECT_EQ(timers, (std::vector<std::string>{"first", "second", "last"}));
  EXPECT_EQ(log.front(), "first");
  EXPECT_EQ(log.back(), "last");
  EXPECT_EQ(loop.wheel().armedCount(), 0u);
}

TEST(EventLoop, CallbacksMayDeleteAndReplaceDescriptorsOfTheSameBatch) {
  Kiv::EventLoop loop;
  EventFd a, b;
  int calls = 0;
  // Both are readable in the same wait; whichever runs first deletes the
  // other, which must not run for the event already collected.
  loop.fdReadableIs(a.fd, [&] {
    ++calls;
    loop.fdDel(b.fd);
  });
  loop.fdReadableIs(b.fd, [&] {
    ++calls;
    loop.fdDel(a.fd);
  });
  a.signal();
  b.signal();
  loop.runOnce(0);
  EXPECT_EQ(calls, 1);

  // A callback that replaces itself keeps running safely; the new one runs
  // on the next readable event.
  std::vector<std::string> log;
  EventFd c;
  loop.fdReadableIs(c.fd, [&] {
    log.push_back("old");
    loop.fdReadableIs(c.fd, [&] {
      log.push_back("new");
      c.drain();
    });
    log.push_back("old done");
  });
  c.signal();
  loop.runOnce(0);
  loop.runOnce(0);
  EXPECT_EQ(log, (std::vector<std::string>{"old", "old done", "new"}));
}

TEST(EventLoop, RunForEndsWithoutFiringLaterTimers) {
  Kiv::EventLoop loop;
  bool early = false, later = false;
  Kiv::Timer soon(loop.wheel(), [&] { early = true; });
  Kiv::Timer afterwards(loop.wheel(), [&] { later = true; });
  soon.timeMinIs(Orv::now() + 0.005);
  afterwards.timeMinIs(Orv::now() + 3600);
  loop.runFor(0.02);
  EXPECT_TRUE(early);
  EXPECT_FALSE(later);
  EXPECT_EQ(loop.wheel().armedCount(), 1u);
  loop.runOnce(0);
  EXPECT_FALSE(later);
}

TEST(EventLoop, ADescriptorIsWatchedOneWayAtATime) {
  Kiv::EventLoop loop;
  EventFd event;
  std::vector<std::string> log;
  // An eventfd is writable until its counter is full, readable once signalled.
  loop.fdWritableIs(event.fd, [&] {
    log.push_back("writable");
    loop.fdReadableIs(event.fd, [&] {
      log.push_back("readable");
      event.drain();
    });
  });
  loop.runOnce(0);
  loop.runOnce(0);
  event.signal();
  loop.runOnce(0);
  EXPECT_EQ(log, (std::vector<std::string>{"writable", "readable"}));
  loop.fdDel(event.fd);
}

TEST(EventLoop, ABadDescriptorIsASetupError) {
  Kiv::EventLoop loop;
  EXPECT_THROW(loop.fdReadableIs(-1, [] {}), std::system_error);
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  close(fds[0]);
  close(fds[1]);
  EXPECT_THROW(loop.fdReadableIs(fds[0], [] {}), std::system_error);
  loop.fdDel(fds[0]);
}

} // namespace
