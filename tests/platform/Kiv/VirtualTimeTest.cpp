#include <gtest/gtest.h>

#include <vector>

#include "Kiv/VirtualTime.h"

namespace {

TEST(VirtualTime, ObservesEveryTimerAtExactlyItsTime) {
  auto wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time(wheel, 1000.0);
  EXPECT_EQ(Orv::now(), 1000.0);
  std::vector<double> seen;
  Kiv::Timer every(*wheel, [&] {
    seen.push_back(Orv::now());
    every.timeMinIs(Orv::now() + 0.5);
  });
  every.timeMinIs(Orv::now() + 2);
  time.runUntil(1004.0);
  EXPECT_EQ(seen,
            (std::vector<double>{1002.0, 1002.5, 1003.0, 1003.5, 1004.0}));
  EXPECT_EQ(Orv::now(), 1004.0);
  time.runFor(0.25);
  EXPECT_EQ(Orv::now(), 1004.25);
  EXPECT_EQ(seen.size(), 5u);
  EXPECT_EQ(every.timeMin(), 1004.5);
}

TEST(VirtualTime, TheClockNeverGoesBack) {
  auto wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time(wheel, 50.0);
  std::vector<double> seen;
  Kiv::Timer late(*wheel, [&] { seen.push_back(Orv::now()); });
  late.timeMinIs(10.0);
  time.runUntil(40.0);
  EXPECT_EQ(seen, std::vector<double>{50.0});
  EXPECT_EQ(time.now(), 50.0);
  time.runUntil(60.0);
  EXPECT_EQ(time.now(), 60.0);
}

TEST(VirtualTime, TheSystemClockIsBackAfterwards) {
  {
    Kiv::VirtualTime time(Orv::make<Kiv::TimerWheel>());
    EXPECT_EQ(Orv::now(), 0.0);
  }
  EXPECT_GT(Orv::now(), 1.6e9);
}

} // namespace
