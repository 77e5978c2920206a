#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <utility>
#include <vector>

#include "Kiv/TimerWheel.h"
#include "Orv/Clock.h"

namespace Netsim {

// What is under way on one path: each item arrives `delay` seconds after it
// was sent, and never before an item sent earlier. Everything due at the
// same moment arrives together, in sending order, in one call of `arrive`,
// as a burst of frames reaches a socket before its reader wakes. One timer
// serves the whole path.
template <class T> class DelayLine {
public:
  using Arrive = std::function<void(std::vector<T> &)>;

  DelayLine(Kiv::TimerWheel &wheel, Arrive arrive)
      : arrive_(std::move(arrive)), timer_(wheel, [this] { handleTimer(); }) {}
  DelayLine(const DelayLine &) = delete;
  DelayLine &operator=(const DelayLine &) = delete;

  void itemIs(T item, double delay) {
    double due = Orv::now() + delay;
    if (!queue_.empty() && due < queue_.back().due) {
      due = queue_.back().due;
    }
    queue_.push_back(Entry{due, std::move(item)});
    if (queue_.size() == 1) {
      timer_.timeMinIs(due);
    }
  }
  // Items sent and not yet arrived.
  std::size_t inFlight() const { return queue_.size(); }

private:
  struct Entry {
    double due;
    T item;
  };

  // The path is ready for what `arrive` sends on it before `arrive` runs.
  void handleTimer() {
    const double now = Orv::now();
    while (!queue_.empty() && queue_.front().due <= now) {
      burst_.push_back(std::move(queue_.front().item));
      queue_.pop_front();
    }
    if (!queue_.empty()) {
      timer_.timeMinIs(queue_.front().due);
    }
    arrive_(burst_);
    burst_.clear();
  }

  Arrive arrive_;
  std::deque<Entry> queue_;
  // Kept between bursts, so that a steady flow does not allocate.
  std::vector<T> burst_;
  Kiv::Timer timer_;
};

} // namespace Netsim
