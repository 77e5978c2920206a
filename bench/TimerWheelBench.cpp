#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

#include "Kiv/VirtualTime.h"

namespace {

constexpr double start = 1.7e9;
constexpr double spread = 60.0;

// `count` offsets within `spread` seconds: at random, or rising with the
// index so that timers fire in the order they sit in memory.
std::vector<double> offsets(std::size_t count, bool random) {
  std::mt19937_64 engine(7);
  std::uniform_real_distribution<double> offset(0.0, spread);
  std::vector<double> times(count);
  for (std::size_t i = 0; i < count; ++i) {
    times[i] = random ? offset(engine) : spread * double(i) / double(count);
  }
  return times;
}

// Timers counting their firings, each allocated on its own as a member of a
// session object would be.
struct Timers {
  Timers(Kiv::TimerWheel &wheel, std::size_t count) {
    timers.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      timers.push_back(
          std::make_unique<Kiv::Timer>(wheel, [this] { ++fired; }));
    }
  }
  Kiv::Timer &operator[](std::size_t i) { return *timers[i]; }

  std::vector<std::unique_ptr<Kiv::Timer>> timers;
  long fired = 0;
};

// Time per timer (one arming and one firing) and per operation (either).
void armAndFireCounters(benchmark::State &state, const Timers &timers,
                        std::size_t count) {
  using benchmark::Counter;
  if (timers.fired != long(count) * long(state.iterations())) {
    state.SkipWithError("not every timer fired");
  }
  const auto perIteration =
      Counter::Flags(Counter::kIsIterationInvariantRate | Counter::kInvert);
  state.counters["per_timer"] = Counter(double(count), perIteration);
  state.counters["per_op"] = Counter(2.0 * double(count), perIteration);
}

// A million timers armed over a minute, then fired by virtual time stepping
// from each minimum time to the next: each timer fires in a pass of its own.
// Random times make every firing a jump in memory; rising ones the best case.
void armAndFireStepping(benchmark::State &state) {
  const auto count = std::size_t(state.range(0));
  auto wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time(wheel, start);
  Timers timers(*wheel, count);
  const std::vector<double> at = offsets(count, state.range(1) != 0);
  for (auto _ : state) {
    const double from = time.now() + 1;
    for (std::size_t i = 0; i < count; ++i) {
      timers[i].timeMinIs(from + at[i]);
    }
    time.runUntil(from + spread);
  }
  armAndFireCounters(state, timers, count);
}
BENCHMARK(armAndFireStepping)
    ->ArgNames({"timers", "random"})
    ->Args({1000000, 1})
    ->Args({1000000, 0})
    ->Unit(benchmark::kMillisecond);

// The same million random timers fired as an event loop waking every
// millisecond would: about sixteen per pass.
void armAndFireEveryMs(benchmark::State &state) {
  const auto count = std::size_t(state.range(0));
  auto wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time(wheel, start);
  Timers timers(*wheel, count);
  const std::vector<double> at = offsets(count, true);
  for (auto _ : state) {
    const double from = time.now() + 1;
    for (std::size_t i = 0; i < count; ++i) {
      timers[i].timeMinIs(from + at[i]);
    }
    for (int ms = 0; ms <= 1000 * int(spread); ++ms) {
      time.runUntil(from + ms * 1e-3);
    }
  }
  armAndFireCounters(state, timers, count);
}
BENCHMARK(armAndFireEveryMs)
    ->ArgName("timers")
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

// `range(0)` timers armed at random over the next minute, behind the 1024
// the benchmark works on: the cost of an operation must not grow with them.
struct Background {
  explicit Background(std::size_t count)
      : wheel(Orv::make<Kiv::TimerWheel>()), clock(wheel, start),
        armed(*wheel, count), work(*wheel, workCount), at(offsets(4096, true)) {
    const std::vector<double> armedAt = offsets(count, true);
    for (std::size_t i = 0; i < count; ++i) {
      armed[i].timeMinIs(start + 1 + armedAt[i]);
    }
  }
  Kiv::Timer &worker(std::size_t i) { return work[i % workCount]; }
  double timeAt(std::size_t i) const { return start + 1 + at[i % at.size()]; }

  static constexpr std::size_t workCount = 1024;
  Orv::Ptr<Kiv::TimerWheel> wheel;
  Kiv::VirtualTime clock;
  Timers armed;
  Timers work;
  std::vector<double> at;
};

void reArm(benchmark::State &state) {
  Background background(std::size_t(state.range(0)));
  for (std::size_t i = 0; i < Background::workCount; ++i) {
    background.worker(i).timeMinIs(background.timeAt(i));
  }
  std::size_t i = 0;
  for (auto _ : state) {
    background.worker(i).timeMinIs(background.timeAt(i + 7));
    ++i;
  }
}
BENCHMARK(reArm)->ArgName("armed")->Arg(10)->Arg(1000000);

void armThenDisarm(benchmark::State &state) {
  Background background(std::size_t(state.range(0)));
  std::size_t i = 0;
  for (auto _ : state) {
    Kiv::Timer &timer = background.worker(i);
    timer.timeMinIs(background.timeAt(i));
    timer.timeMinIs(Kiv::Timer::never);
    ++i;
  }
}
BENCHMARK(armThenDisarm)->ArgName("armed")->Arg(10)->Arg(1000000);

// What an event loop pays per wake-up when nothing is due.
void fireNothingDue(benchmark::State &state) {
  Background background(std::size_t(state.range(0)));
  for (auto _ : state) {
    background.wheel->fireExpired();
    benchmark::DoNotOptimize(background.wheel->nextTimeMin());
  }
}
BENCHMARK(fireNothingDue)->ArgName("armed")->Arg(10)->Arg(1000000);

} // namespace
