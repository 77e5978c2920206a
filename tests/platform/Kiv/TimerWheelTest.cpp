#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "Kiv/TimerWheel.h"
#include "Orv/Clock.h"

namespace {

constexpr double never = Kiv::Timer::never;
// A whole number of seconds, so a tick starts there.
constexpr double base = 1.7e9;

// A wheel on a virtual clock, and the timers it fires, in order.
class TimerWheelTest : public ::testing::Test {
protected:
  // A timer that records its id when it fires, and checks it is not early.
  struct Probe {
    Probe(TimerWheelTest &test, int id)
        : timer(*test.wheel, [&test, this, id] {
            test.fired.push_back(id);
            EXPECT_GE(Orv::now(), armedFor) << "timer " << id << " early";
            EXPECT_FALSE(timer.armed());
            if (onFire) {
              onFire();
            }
          }) {}
    void at(double t) {
      armedFor = t;
      timer.timeMinIs(t);
    }

    Kiv::Timer timer;
    double armedFor = never;
    std::function<void()> onFire;
  };

  void SetUp() override {
    Orv::clockIs(&clock);
    wheel = Orv::make<Kiv::TimerWheel>();
  }
  void TearDown() override { Orv::clockIs(nullptr); }

  std::unique_ptr<Probe> probe(int id, double at = never) {
    auto p = std::make_unique<Probe>(*this, id);
    if (at != never) {
      p->at(at);
    }
    return p;
  }
  // The ids fired by a pass at time `t`.
  std::vector<int> fireAt(double t) {
    fired.clear();
    clock.nowIs(t);
    wheel->fireExpired();
    return fired;
  }

  Orv::VirtualClock clock{base};
  Orv::Ptr<Kiv::TimerWheel> wheel;
  std::vector<int> fired;
};

using Ids = std::vector<int>;

TEST_F(TimerWheelTest, TimesPastTheWheelsRangeStillFireInOrder) {
  // 2^38 s (2^58 ticks) is where the wheel's ticks end; later times share
  // its last slot.
  const double end = std::ldexp(1.0, 38);
  clock.nowIs(end - 1000);
  auto a = probe(1, 1e300);
  auto b = probe(2, end + 10);
  auto c = probe(3, end - 10);
  auto d = probe(4, 1e20);
  auto e = probe(5, std::numeric_limits<double>::max());
  auto f = probe(6, end + 5);
  EXPECT_EQ(fireAt(end + 7), (Ids{3, 6}));
  EXPECT_EQ(wheel->nextTimeMin(), end + 10);
  EXPECT_EQ(fireAt(1e20), (Ids{2, 4}));
  EXPECT_EQ(fireAt(1e299), Ids{});
  EXPECT_EQ(fireAt(never), (Ids{1, 5}));
}

TEST_F(TimerWheelTest, CallbacksMayReArmArmAndDestroyTimersOfTheSamePass) {
  // A periodic timer fires once per arming, interleaved in time order with
  // the others, all in one pass; a destroyed timer does not fire.
  auto periodic = probe(1, base + 1);
  periodic->onFire = [&] {
    if (periodic->armedFor < base + 4) {
      periodic->at(periodic->armedFor + 1);
    }
  };
  auto x = probe(2, base + 2.5);
  auto gone = probe(8, base + 3);
  gone.reset();
  EXPECT_EQ(fireAt(base + 10), (Ids{1, 1, 2, 1, 1}));

  // One destroys its owner and a later one, disarms another and arms one
  // for a time already passed, which fires in the same pass.
  auto self = probe(3, base + 11);
  auto victim = probe(4, base + 12);
  auto disarmed = probe(5, base + 12);
  auto late = probe(6);
  auto last = probe(7, base + 13);
  self->onFire = [&] {
    victim.reset();
    disarmed->at(never);
    late->at(base);
    self.reset();
  };
  EXPECT_EQ(fireAt(base + 20), (Ids{3, 6, 7}));
  EXPECT_EQ(self, nullptr);
  EXPECT_EQ(wheel->armedCount(), 0u);
}

TEST_F(TimerWheelTest, ACallbackThatThrowsLeavesTheOthersArmed) {
  auto a = probe(1, base + 1);
  auto b = probe(2, base + 1);
  auto c = probe(3, base + 2);
  a->onFire = [] { throw std::runtime_error("callback failed"); };
  clock.nowIs(base + 3);
  EXPECT_THROW(wheel->fireExpired(), std::runtime_error);
  EXPECT_EQ(wheel->armedCount(), 2u);
  EXPECT_EQ(wheel->nextTimeMin(), base + 1);
  EXPECT_EQ(fireAt(base + 3), (Ids{2, 3}));
}

TEST_F(TimerWheelTest, ATimerKeepsItsWheel) {
  Kiv::Timer timer(*wheel, [] {});
  wheel = nullptr;
  timer.timeMinIs(base + 1);
  EXPECT_EQ(timer.wheel().armedCount(), 1u);
}

// Random arming, re-arming, disarming and clock moves at every scale the
// wheel has levels for, and callbacks that arm or disarm another timer,
// checked against a plain list of armed timers: each pass fires exactly the
// due timers in order of time then arming, those armed by its callbacks
// included.
TEST_F(TimerWheelTest, MatchesAReferenceModel) {
  constexpr int count = 500;
  struct Armed {
    double time = never;
    unsigned long seq = 0;
  };
  // What a timer does when it fires, once per pass: arm another one at an
  // offset from the time of the pass (maybe already passed), or disarm it.
  struct Action {
    int target = -1;
    double offset = never;
  };
  std::mt19937_64 random(20240611);
  auto uniform = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  const double scales[] = {1e-6, 1e-3, 0.3, 60, 86400, 3e7, 1e11};
  std::vector<Armed> model(count);
  std::vector<Action> actions(count);
  std::vector<bool> acted(count);
  std::vector<std::unique_ptr<Probe>> probes;
  for (int id = 0; id < count; ++id) {
    probes.push_back(probe(id));
    if (random() % 3 == 0) {
      actions[id] = {int(random() % count),
                     random() % 4 == 0
                         ? never
                         : uniform(-1.0, 0.5) * scales[random() % 4]};
    }
    probes[id]->onFire = [&, id] {
      if (actions[id].target >= 0 && !acted[id]) {
        acted[id] = true;
        probes[actions[id].target]->at(Orv::now() + actions[id].offset);
      }
    };
  }
  std::vector<double> popular;
  unsigned long seq = 0;
  for (int step = 0; step < 20000; ++step) {
    const int id = int(random() % count);
    const int what = int(random() % 100);
    const double now = Orv::now();
    if (what < 55) {
      double t = now + uniform(-0.1, 1.0) * scales[random() % 7];
      if (!popular.empty() && random() % 4 == 0) {
        t = popular[random() % popular.size()];
      } else if (popular.size() < 16) {
        popular.push_back(t);
      }
      probes[id]->at(t);
      model[id] = {t, ++seq};
    } else if (what < 65) {
      probes[id]->at(never);
      model[id] = {};
    } else {
      // Moves short of the wheel's end, so that all its levels take part.
      double to = now + uniform(0, 1) * scales[random() % 6];
      if (what == 99) {
        to = now - uniform(0, 100);
      }
      std::vector<int> due;
      std::vector<bool> acts(count);
      for (;;) {
        int next = -1;
        for (int i = 0; i < count; ++i) {
          if (model[i].time <= to &&
              (next < 0 || model[i].time < model[next].time ||
               (model[i].time == model[next].time &&
                model[i].seq < model[next].seq))) {
            next = i;
          }
        }
        if (next < 0) {
          break;
        }
        due.push_back(next);
        model[next] = {};
        const Action &action = actions[next];
        if (action.target >= 0 && !acts[next]) {
          acts[next] = true;
          const double t = to + action.offset;
          model[action.target] = t == never ? Armed{} : Armed{t, ++seq};
        }
      }
      acted.assign(count, false);
      ASSERT_EQ(fireAt(to), due) << "step " << step;
      ASSERT_EQ(acted, acts) << "step " << step;
    }
    double earliest = never;
    std::size_t armed = 0;
    for (const Armed &m : model) {
      earliest = std::min(earliest, m.time);
      armed += m.time != never;
    }
    ASSERT_EQ(wheel->nextTimeMin(), earliest) << "step " << step;
    ASSERT_EQ(wheel->armedCount(), armed) << "step " << step;
  }
}

} // namespace
