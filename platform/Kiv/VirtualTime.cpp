#include "Kiv/VirtualTime.h"

#include <utility>

namespace Kiv {

VirtualTime::VirtualTime(Orv::Ptr<TimerWheel> wheel, double start)
    : wheel_(std::move(wheel)), clock_(start) {
  Orv::clockIs(&clock_);
}

VirtualTime::~VirtualTime() { Orv::clockIs(nullptr); }

void VirtualTime::runUntil(double t) {
  for (double next = wheel_->nextTimeMin(); next <= t;
       next = wheel_->nextTimeMin()) {
    if (next > clock_.now()) {
      clock_.nowIs(next);
    }
    wheel_->fireExpired();
  }
  if (t > clock_.now()) {
    clock_.nowIs(t);
  }
}

} // namespace Kiv
