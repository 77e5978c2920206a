#pragma once

#include "Orv/Export.h"

namespace Orv {

// Source of the current time in seconds since 1970 as a double.
class LSPPING_EXPORT Clock {
public:
  virtual ~Clock() = default;
  virtual double now() const = 0;
};

// A clock that stands still until told otherwise; tests install it.
class LSPPING_EXPORT VirtualClock : public Clock {
public:
  explicit VirtualClock(double start = 0.0) : now_(start) {}
  double now() const override { return now_; }
  void nowIs(double t) { now_ = t; }
  void advance(double seconds) { now_ += seconds; }

private:
  double now_;
};

// The current time from the installed clock (the system clock by default).
LSPPING_EXPORT double now();

// Installs a clock; nullptr restores the system clock.
LSPPING_EXPORT void clockIs(const Clock *clock);

} // namespace Orv
