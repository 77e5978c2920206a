#include "Kiv/TimerWheel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include "Orv/Assert.h"
#include "Orv/Clock.h"

namespace Kiv {

namespace {

using Orv::U64;
using Orv::U8;
using Link = detail::TimerLink;

constexpr double ticksPerSecond = 1 << 20;

bool empty(const Link &head) noexcept { return head.next == &head; }

// Moves every node of `from` to the end of `to`.
void spliceBack(Link &to, Link &from) noexcept {
  if (empty(from)) {
    return;
  }
  Link *first = from.next;
  Link *last = from.prev;
  first->prev = to.prev;
  to.prev->next = first;
  last->next = &to;
  to.prev = last;
  from.next = from.prev = &from;
}

} // namespace

Timer::Timer(TimerWheel &wheel, std::function<void()> onExpiry)
    : onExpiry_(std::move(onExpiry)), wheel_(&wheel) {
  ORV_ASSERT(onExpiry_);
}

Timer::~Timer() {
  if (armed()) {
    wheel_->remove(*this);
  }
}

void Timer::timeMinIs(double seconds) {
  ORV_ASSERT(!std::isnan(seconds));
  if (armed()) {
    wheel_->remove(*this);
  }
  timeMin_ = seconds;
  if (armed()) {
    wheel_->insert(*this);
  }
}

TimerWheel::TimerWheel() {
  std::fill(std::begin(laneMin_), std::end(laneMin_), Timer::never);
}

TimerWheel::~TimerWheel() {
  // Every timer holds a reference to its wheel.
  ORV_ASSERT(armed_ == 0);
}

// The tick holding `seconds`: exactly its floor in ticks, as scaling by a
// power of two loses nothing. Times before 1970 share tick 0 and times past
// the wheel's range its last tick.
inline U64 TimerWheel::tickOf(double seconds) noexcept {
  constexpr U64 end = U64(1) << tickBits;
  const double ticks = seconds * ticksPerSecond;
  if (!(ticks > 0.0)) {
    return 0;
  }
  if (ticks >= double(end)) {
    return end - 1;
  }
  // The signed conversion (cheaper than the unsigned one) holds it.
  return U64(Orv::S64(ticks));
}

double TimerWheel::timeOf(const Link *link) noexcept {
  return static_cast<const Timer *>(link)->timeMin_;
}

// Merges two null-terminated lists sorted by time; on equal times the nodes
// of `a` come first, so the sort built on it is stable.
Link *TimerWheel::merge(Link *a, Link *b) noexcept {
  Link head;
  Link *tail = &head;
  while (a != nullptr && b != nullptr) {
    if (timeOf(b) < timeOf(a)) {
      tail->next = b;
      b = b->next;
    } else {
      tail->next = a;
      a = a->next;
    }
    tail = tail->next;
  }
  tail->next = a != nullptr ? a : b;
  return head.next;
}

// Sorts a circular list by time, keeping the list order (the arming order)
// of equal times. One pass when it is already sorted; otherwise a bottom-up
// merge sort.
void TimerWheel::sortByTime(Link &head) noexcept {
  bool sorted = true;
  for (Link *p = head.next; p->next != &head; p = p->next) {
    if (timeOf(p->next) < timeOf(p)) {
      sorted = false;
      break;
    }
  }
  if (sorted) {
    return;
  }
  // bins[i] holds a sorted run of 2^i nodes, all earlier in the list than
  // those of the lower bins.
  Link *bins[64] = {};
  head.prev->next = nullptr;
  Link *rest = head.next;
  while (rest != nullptr) {
    Link *run = rest;
    rest = rest->next;
    run->next = nullptr;
    int i = 0;
    for (; bins[i] != nullptr; ++i) {
      run = merge(bins[i], run);
      bins[i] = nullptr;
    }
    bins[i] = run;
  }
  Link *all = nullptr;
  for (Link *bin : bins) {
    if (bin != nullptr) {
      all = merge(bin, all);
    }
  }
  Link *prev = &head;
  for (Link *p = all; p != nullptr; p = p->next) {
    prev->next = p;
    p->prev = prev;
    prev = p;
  }
  prev->next = &head;
  head.prev = prev;
}

inline void TimerWheel::slotOccupiedIs(int level, int slot) noexcept {
  const unsigned word = unsigned(slot) / 64;
  occupied_[level][word] |= U64(1) << (unsigned(slot) % 64);
  wordsOccupied_[level] = Orv::U16(wordsOccupied_[level] | 1u << word);
  levelsOccupied_ |= 1u << level;
}

inline void TimerWheel::slotEmptied(int level, int slot) noexcept {
  const unsigned word = unsigned(slot) / 64;
  U64 &bits = occupied_[level][word];
  bits &= ~(U64(1) << (unsigned(slot) % 64));
  if (bits == 0) {
    wordsOccupied_[level] = Orv::U16(wordsOccupied_[level] & ~(1u << word));
    if (wordsOccupied_[level] == 0) {
      levelsOccupied_ &= ~(1u << level);
    }
  }
}

inline void TimerWheel::listEmptied(Link *head) noexcept {
  if (head == &pending_) {
    return;
  }
  const auto index = int(head - heads_);
  if (index < level0Slots) {
    slotEmptied(0, index);
    return;
  }
  const auto above = unsigned(index - level0Slots);
  const int lane = int(above % lanes);
  const int slot = int(above / lanes % slotsPerLevel);
  const int level = int(above / (lanes * slotsPerLevel)) + 1;
  U8 &occupied = lanesOccupied_[level - 1][slot];
  occupied = U8(occupied & ~(1u << lane));
  laneMin_[index] = Timer::never;
  if (occupied == 0) {
    slotEmptied(level, slot);
  }
}

inline TimerWheel::Place TimerWheel::placeOf(U64 tick) const noexcept {
  const int width = std::bit_width(tick ^ cur_);
  if (width <= level0Bits) {
    const int slot = int(tick & (level0Slots - 1));
    return {0, slot, slot};
  }
  const int level = 1 + (width - 1 - level0Bits) / levelBits;
  const int shift = shiftOf(level);
  const int slot = int(tick >> shift) & (slotsPerLevel - 1);
  const int lane = int(tick >> (shift - laneBits)) & (lanes - 1);
  return {level, slot, laneIndex(level, slot, lane)};
}

inline void TimerWheel::file(Timer &timer, U64 tick) noexcept {
  const Place place = placeOf(tick);
  Link &head = heads_[place.index];
  Link *tail = head.prev;
  timer.prev = tail;
  timer.next = &head;
  tail->next = &timer;
  head.prev = &timer;
  if (place.level > 0) {
    lanesOccupied_[place.level - 1][place.slot] |=
        U8(1u << laneOf(place.index));
    // An unknown minimum (NaN) stays unknown.
    laneMin_[place.index] = std::min(laneMin_[place.index], timer.timeMin_);
  }
  slotOccupiedIs(place.level, place.slot);
}

void TimerWheel::insert(Timer &timer) noexcept {
  if (armed_ == 0 && !firing_) {
    // An empty wheel starts from the current time on the clock installed
    // now, so that its timers land at the levels they fire from.
    cur_ = tickOf(Orv::now());
  }
  const U64 tick = tickOf(timer.timeMin_);
  if (firing_ && tick <= cur_) {
    pendingInsert(timer);
  } else {
    // A time already passed waits at the current tick. Should the clock
    // have gone back, the next pass re-files it by its own tick.
    file(timer, std::max(tick, cur_));
  }
  if (earliestKnown_ && timer.timeMin_ < earliest_) {
    earliest_ = timer.timeMin_;
  }
  ++armed_;
}

inline void TimerWheel::unlink(Timer &timer) noexcept {
  Link *prev = timer.prev;
  Link *next = timer.next;
  prev->next = next;
  next->prev = prev;
  if (prev == next) {
    // The timer was alone in its list; `prev` is the list's head.
    listEmptied(prev);
  }
  --armed_;
  if (armed_ == 0) {
    earliestKnown_ = true;
    earliest_ = Timer::never;
  } else if (timer.timeMin_ == earliest_) {
    earliestKnown_ = false;
  }
}

void TimerWheel::remove(Timer &timer) noexcept {
  unlink(timer);
  // A timer's list follows from its tick and the current tick alone.
  const Place place = placeOf(std::max(tickOf(timer.timeMin_), cur_));
  if (place.level > 0 && laneMin_[place.index] == timer.timeMin_) {
    laneMin_[place.index] = std::numeric_limits<double>::quiet_NaN();
  }
}

inline int TimerWheel::firstSlot(int level) const noexcept {
  const int word = std::countr_zero(unsigned(wordsOccupied_[level]));
  return word * 64 + std::countr_zero(occupied_[level][word]);
}

void TimerWheel::cascade(int level, int slot) noexcept {
  // Each lane becomes a null-terminated list, and the lists are walked in
  // turn, one timer at a time, each fetching its next timer ahead.
  Link *walks[lanes];
  int count = 0;
  auto &occupied = lanesOccupied_[level - 1][slot];
  for (unsigned left = occupied; left != 0; left &= left - 1) {
    const int index = laneIndex(level, slot, std::countr_zero(left));
    Link &head = heads_[index];
    laneMin_[index] = Timer::never;
    head.prev->next = nullptr;
    walks[count++] = head.next;
    head.next = head.prev = &head;
  }
  occupied = 0;
  slotEmptied(level, slot);
  while (count > 0) {
    for (int i = 0; i < count;) {
      Timer &timer = *static_cast<Timer *>(walks[i]);
      Link *next = timer.next;
      if (next != nullptr) {
        __builtin_prefetch(next);
        walks[i++] = next;
      } else {
        walks[i] = walks[--count];
      }
      file(timer, tickOf(timer.timeMin_));
    }
  }
}

void TimerWheel::rewind(U64 tick) noexcept {
  Link all;
  for (Link &head : heads_) {
    spliceBack(all, head);
  }
  std::fill(&occupied_[0][0], &occupied_[0][0] + levels * wordsPerLevel, 0);
  std::fill(std::begin(wordsOccupied_), std::end(wordsOccupied_), 0);
  std::fill(&lanesOccupied_[0][0],
            &lanesOccupied_[0][0] + (levels - 1) * slotsPerLevel, 0);
  std::fill(std::begin(laneMin_), std::end(laneMin_), Timer::never);
  levelsOccupied_ = 0;
  cur_ = tick;
  while (!empty(all)) {
    Timer &timer = *static_cast<Timer *>(all.next);
    all.next = timer.next;
    file(timer, std::max(tickOf(timer.timeMin_), cur_));
  }
}

// A timer armed by a callback for the tick being fired, or an earlier one,
// joins the timers of that tick in order, after those of the same time.
void TimerWheel::pendingInsert(Timer &timer) noexcept {
  Link *after = pending_.prev;
  while (after != &pending_ && timeOf(after) > timer.timeMin_) {
    after = after->prev;
  }
  timer.prev = after;
  timer.next = after->next;
  after->next->prev = &timer;
  after->next = &timer;
}

// Puts the timers left of the tick being fired back in its slot, which no
// timer joined meanwhile: those armed for it went to `pending_`.
void TimerWheel::pendingRestore() noexcept {
  if (empty(pending_)) {
    return;
  }
  const int slot = int(cur_ & (level0Slots - 1));
  spliceBack(heads_[slot], pending_);
  slotOccupiedIs(0, slot);
}

void TimerWheel::fireExpired() {
  ORV_ASSERT(!firing_);
  const double now = Orv::now();
  const U64 nowTick = tickOf(now);
  if (armed_ == 0) {
    cur_ = nowTick;
    return;
  }
  if (nowTick < cur_) {
    rewind(nowTick);
  }
  // A callback may drop the last reference to the wheel, or throw: the pass
  // ends with the wheel alive and whole either way.
  const Orv::Ptr<TimerWheel> keep(this);
  struct PassEnd {
    TimerWheel &wheel;
    ~PassEnd() {
      wheel.pendingRestore();
      wheel.firing_ = false;
    }
  } passEnd{*this};
  firing_ = true;
  while (levelsOccupied_ != 0) {
    const int level = std::countr_zero(levelsOccupied_);
    const int slot = firstSlot(level);
    if (level > 0) {
      const U64 span = U64(1) << shiftOf(level + 1);
      const U64 start = (cur_ & ~(span - 1)) | (U64(slot) << shiftOf(level));
      if (start > nowTick) {
        break;
      }
      cur_ = start;
      cascade(level, slot);
      continue;
    }
    const U64 tick = (cur_ & ~U64(level0Slots - 1)) | U64(slot);
    if (tick > nowTick) {
      break;
    }
    cur_ = tick;
    spliceBack(pending_, heads_[slot]);
    slotEmptied(0, slot);
    sortByTime(pending_);
    while (!empty(pending_) && timeOf(pending_.next) <= now) {
      Timer &timer = *static_cast<Timer *>(pending_.next);
      unlink(timer);
      timer.timeMin_ = Timer::never;
      timer.onExpiry_();
    }
    if (!empty(pending_)) {
      // Only the tick of `now` can hold timers still to come.
      pendingRestore();
      break;
    }
  }
  cur_ = std::max(cur_, nowTick);
}

double TimerWheel::nextTimeMin() const {
  if (!earliestKnown_) {
    earliest_ = earliestScan();
    earliestKnown_ = true;
  }
  return earliest_;
}

double TimerWheel::earliestScan() const noexcept {
  double earliest = Timer::never;
  if (!empty(pending_)) {
    earliest = timeOf(pending_.next);
  }
  if (levelsOccupied_ == 0) {
    return earliest;
  }
  const int level = std::countr_zero(levelsOccupied_);
  const int slot = firstSlot(level);
  if (level == 0) {
    const Link &head = heads_[slot];
    for (const Link *p = head.next; p != &head; p = p->next) {
      earliest = std::min(earliest, timeOf(p));
    }
    return earliest;
  }
  const int index = laneIndex(
      level, slot, std::countr_zero(unsigned(lanesOccupied_[level - 1][slot])));
  if (std::isnan(laneMin_[index])) {
    const Link &head = heads_[index];
    double laneMin = Timer::never;
    for (const Link *p = head.next; p != &head; p = p->next) {
      laneMin = std::min(laneMin, timeOf(p));
    }
    laneMin_[index] = laneMin;
  }
  return std::min(earliest, laneMin_[index]);
}

} // namespace Kiv
