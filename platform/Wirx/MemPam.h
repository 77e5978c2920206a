#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "Orv/Export.h"
#include "Wirx/Pam.h"

namespace Wirx {

// A packet-access module in memory, for tests and in-process runs. What is
// sent is recorded as a copy of its bytes, as a device would have sent them
// at that moment, and the packet is let go at once. Received frames are
// handed in by the test with rxPktIs. It is writable from the start.
class LSPPING_EXPORT MemPam : public Pam {
public:
  using Frame = std::vector<Orv::U8>;
  static constexpr std::size_t unlimited = ~std::size_t(0);

  explicit MemPam(const Orv::Name &name, std::size_t frameLimit = unlimited);

  // Records the frame, or counts a transmit drop when `frameLimit` frames
  // are already recorded.
  void txPktIs(const Orv::Ptr<Pkt> &pkt) override;

  // The frames recorded, in the order they were sent.
  const std::vector<Frame> &frames() const { return frames_; }
  // Forgets the recorded frames; when that makes room under the limit after
  // frames were dropped, the module becomes writable again.
  void clear();
  std::size_t frameLimit() const { return frameLimit_; }
  void frameLimitIs(std::size_t limit) { frameLimit_ = limit; }

  // Queues `pkt` as received and raises the readable count, so that readers
  // take it with rxPkt() in the order of arrival.
  void rxPktIs(Orv::Ptr<Pkt> pkt);
  // The received frames not yet read.
  std::size_t rxQueued() const { return rxQueue_.size(); }

private:
  void doGetRxPkt() override;

  std::vector<Frame> frames_;
  std::size_t frameLimit_;
  bool full_ = false;
  std::deque<Orv::Ptr<Pkt>> rxQueue_;
};

} // namespace Wirx
