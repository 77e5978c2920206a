#pragma once

#include <cstddef>
#include <functional>
#include <limits>

#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Types.h"

namespace Kiv {

class TimerWheel;

namespace detail {

// The intrusive list node that every Timer carries and every slot of the
// wheel heads. Lists are circular around their head, so a node unlinks
// itself without knowing which list it is in.
struct TimerLink {
  TimerLink *next = this;
  TimerLink *prev = this;
};

} // namespace detail

// A one-shot timer, a member of whatever it wakes. It fires once per arming:
// the wheel disarms it, then calls `onExpiry`, which may arm it again or
// destroy its owner (and so the timer). Destroying it disarms it. It keeps
// its wheel alive.
class LSPPING_EXPORT Timer : private detail::TimerLink {
public:
  static constexpr double never = std::numeric_limits<double>::infinity();

  Timer(TimerWheel &wheel, std::function<void()> onExpiry);
  Timer(const Timer &) = delete;
  Timer &operator=(const Timer &) = delete;
  ~Timer();

  // Arms the timer to fire once Orv::now() reaches `seconds` (absolute, on
  // Orv::now()'s clock), or disarms it when `seconds` is `never`. Each call
  // is a new arming, even with the same time. Constant time.
  void timeMinIs(double seconds);
  // When the timer is due, or `never` while it is disarmed.
  double timeMin() const { return timeMin_; }
  bool armed() const { return timeMin_ != never; }
  TimerWheel &wheel() const { return *wheel_; }

private:
  friend class TimerWheel;

  // What firing reads comes first, within the node's first cache line.
  double timeMin_ = never;
  std::function<void()> onExpiry_;
  Orv::Ptr<TimerWheel> wheel_;
};

// The timers of one event loop, filed by due time in a hierarchical timing
// wheel so that arming, re-arming and disarming cost the same whether ten or
// a million timers are armed.
//
// Time is counted in ticks of 2^-20 s (about 0.95 us): a time in seconds
// times 2^20 is exact in a double, so a timer's tick is exactly the floor of
// its time. Level 0 has 1024 slots of one tick (about a millisecond in all),
// and each of the six levels above 256 slots, each as wide as the whole level
// below: 2^58 ticks, until about the year 10000. A timer sits at the level
// of the highest bits in which its tick differs from the wheel's current
// tick, and moves down a level each time the wheel reaches its slot, so it is
// touched at most once per level on its way to firing: a timer due within a
// minute moves two or three times. Each level keeps bitmaps of its occupied
// slots: the earliest occupied slot is found with a few bit operations,
// however far away it is. Times past the last tick (including huge finite
// ones) share the very last slot, which thereby serves as the overflow list;
// the exact times decide there as everywhere.
//
// A slot above level 0 keeps its timers in eight lanes, by the slot they
// will take one level down (its top three bits). Moving a slot down walks
// the lanes side by side: with a million timers most of them are out of the
// cache by then, and eight independent walks wait for memory together where
// one list would wait for each timer in turn. The earliest timer of a slot
// is in its first occupied lane, which remembers its earliest time. Timers of
// the same tick share every lane on their way down, so they stay in arming
// order.
//
// Exact times are kept in the timers: a level-0 slot is sorted by time when
// it fires (a single pass when it already is, which is the common case), and
// its last tick fires only the timers whose time has come.
//
// Orv::now() may step back (a virtual clock set back, or the system clock
// stepped): the first pass that sees it re-files the armed timers around the
// new time, in time proportional to how many are armed.
//
// A wheel takes about 320 KiB, list heads and lane minima mostly: one per
// event loop.
class LSPPING_EXPORT TimerWheel final : public Orv::Object {
public:
  // The wheel's resolution in seconds.
  static constexpr double tick = 1.0 / (1 << 20);

  TimerWheel();

  // Fires, in order of their minimum times (ties in arming order), every
  // armed timer whose minimum time is at most Orv::now(), read once on
  // entry. A timer armed by a callback that is already due fires in the
  // same pass, in its place among those not yet fired, so on return no
  // armed timer is due at that time. Not re-entrant: callbacks must not
  // call it.
  void fireExpired();
  // The exact earliest minimum time of the armed timers, or +infinity when
  // none is armed. Remembered until that timer fires or is disarmed; the
  // next call finds it in the earliest occupied slot: it scans the timers
  // of that tick at level 0; above, it takes the earliest time remembered
  // for the slot's first occupied lane, and scans that lane only when the
  // earliest timer it had was disarmed since.
  double nextTimeMin() const;
  std::size_t armedCount() const { return armed_; }

private:
  friend class Timer;
  using Link = detail::TimerLink;

  static constexpr int level0Bits = 10;
  static constexpr int level0Slots = 1 << level0Bits;
  static constexpr int levelBits = 8; // above level 0
  static constexpr int slotsPerLevel = 1 << levelBits;
  static constexpr int levels = 7;
  static constexpr int tickBits = level0Bits + (levels - 1) * levelBits;
  static constexpr int wordsPerLevel = level0Slots / 64; // at most
  static constexpr int laneBits = 3;
  static constexpr int lanes = 1 << laneBits;
  static constexpr int headCount =
      level0Slots + (levels - 1) * slotsPerLevel * lanes;

  // The lowest bit of a tick that selects the slot at `level`.
  static constexpr int shiftOf(int level) {
    return level == 0 ? 0 : level0Bits + (level - 1) * levelBits;
  }

  ~TimerWheel() override;

  static Orv::U64 tickOf(double seconds) noexcept;
  static double timeOf(const Link *link) noexcept;
  static Link *merge(Link *a, Link *b) noexcept;
  static void sortByTime(Link &head) noexcept;

  // Where the head of a lane of a slot above level 0 is in `heads_`.
  static int laneIndex(int level, int slot, int lane) noexcept {
    return level0Slots + ((level - 1) * slotsPerLevel + slot) * lanes + lane;
  }
  static int laneOf(int index) noexcept {
    return int(unsigned(index - level0Slots) % lanes);
  }
  // The list a timer of tick `tick` belongs in, given the current tick.
  struct Place {
    int level;
    int slot;
    int index; // in `heads_`
  };
  Place placeOf(Orv::U64 tick) const noexcept;

  void insert(Timer &timer) noexcept;
  // Takes an armed timer out of its list, wherever it is.
  void unlink(Timer &timer) noexcept;
  void remove(Timer &timer) noexcept;
  void file(Timer &timer, Orv::U64 tick) noexcept;
  void cascade(int level, int slot) noexcept;
  void rewind(Orv::U64 tick) noexcept;
  void slotOccupiedIs(int level, int slot) noexcept;
  void slotEmptied(int level, int slot) noexcept;
  void listEmptied(Link *head) noexcept;
  // The first occupied slot of an occupied level.
  int firstSlot(int level) const noexcept;
  void pendingInsert(Timer &timer) noexcept;
  void pendingRestore() noexcept;
  double earliestScan() const noexcept;

  // The heads of the level-0 slots, then those of the lanes of the slots of
  // levels 1 and up.
  Link heads_[headCount];
  // The earliest time in each lane (by the index of its head), +infinity
  // when it is empty and NaN once that timer left it until the lane is
  // scanned again. Spares nextTimeMin() walking timers filed long ago.
  mutable double laneMin_[headCount];
  Orv::U8 lanesOccupied_[levels - 1][slotsPerLevel] = {};
  // Three tiers of occupancy bits: slots, then the non-zero words of each
  // level, then the occupied levels.
  Orv::U64 occupied_[levels][wordsPerLevel] = {};
  Orv::U16 wordsOccupied_[levels] = {};
  unsigned levelsOccupied_ = 0;
  // The timers of the tick being fired, taken out of their slot and sorted.
  Link pending_;
  // The tick the wheel has reached: no timer is filed before it.
  Orv::U64 cur_ = 0;
  std::size_t armed_ = 0;
  bool firing_ = false;
  mutable bool earliestKnown_ = true;
  mutable double earliest_ = Timer::never;
};

} // namespace Kiv
