#pragma once

#include "Kiv/TimerWheel.h"
#include "Orv/Clock.h"
#include "Orv/Export.h"

namespace Kiv {

// Runs a timer wheel on a virtual clock: time jumps from one timer to the
// next instead of passing, so a schedule of hours runs in microseconds and
// every timer is observed at exactly its minimum time. Installs its clock as
// Orv::now()'s source for its lifetime; the system clock is back once it is
// destroyed.
class LSPPING_EXPORT VirtualTime {
public:
  explicit VirtualTime(Orv::Ptr<TimerWheel> wheel, double start = 0.0);
  VirtualTime(const VirtualTime &) = delete;
  VirtualTime &operator=(const VirtualTime &) = delete;
  ~VirtualTime();

  // Moves the clock to each armed minimum time up to `t` in turn, firing
  // what is due there, then to `t`. The clock never goes back: a timer armed
  // for a time already passed fires at the current time, and a `t` already
  // passed only fires what is due now.
  void runUntil(double t);
  void runFor(double seconds) { runUntil(now() + seconds); }

  double now() const { return clock_.now(); }
  TimerWheel &wheel() const { return *wheel_; }

private:
  Orv::Ptr<TimerWheel> wheel_;
  Orv::VirtualClock clock_;
};

} // namespace Kiv
