#include "Orv/Clock.h"

#include <chrono>

namespace Orv {

namespace {

class SystemClock : public Clock {
public:
  double now() const override {
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count();
  }
};

const SystemClock systemClock;
const Clock *installed = &systemClock;

} // namespace

double now() { return installed->now(); }

void clockIs(const Clock *clock) { installed = clock ? clock : &systemClock; }

} // namespace Orv
