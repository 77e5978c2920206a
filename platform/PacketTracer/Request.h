#pragma once

#include <array>
#include <utility>

#include "Orv/Export.h"
#include "Orv/Types.h"
#include "PacketTracer/L2Header.h"
#include "PacketTracer/L3Header.h"
#include "Wirx/IntfId.h"
#include "Wirx/MplsLabelEntry.h"

namespace PacketTracer {

// A packet to trace: where it enters, its Ethernet header, its label stack
// (top first) and, optionally, the IP header under the labels. A value:
// filing a request stores a copy.
class LSPPING_EXPORT Request {
public:
  // The deepest label stack the hardware parses.
  static constexpr Orv::U8 maxMplsLabels = 8;

  Request() = default;
  explicit Request(Wirx::IntfId ingressIntf) noexcept
      : ingressIntf_(std::move(ingressIntf)) {}

  const Wirx::IntfId &ingressIntf() const noexcept { return ingressIntf_; }
  const L2Header &l2Header() const noexcept { return l2Header_; }
  Orv::U8 numMplsLabels() const noexcept { return numMplsLabels_; }
  // Throws Orv::RangeError for an index at or past maxMplsLabels.
  Wirx::MplsLabelEntry mplsLabel(Orv::U8 index) const;
  bool hasInnerL3Header() const noexcept { return hasInnerL3Header_; }
  const L3Header &innerL3Header() const noexcept { return innerL3Header_; }

  void l2HeaderIs(const L2Header &v) noexcept { l2Header_ = v; }
  // Throws Orv::RangeError for an index at or past maxMplsLabels.
  void mplsLabelIs(Orv::U8 index, const Wirx::MplsLabelEntry &entry);
  // Throws Orv::RangeError for a count above maxMplsLabels.
  void numMplsLabelsIs(Orv::U8 count);
  void hasInnerL3HeaderIs(bool v) noexcept { hasInnerL3Header_ = v; }
  void innerL3HeaderIs(const L3Header &v) noexcept { innerL3Header_ = v; }

  bool operator==(const Request &) const noexcept = default;

private:
  Wirx::IntfId ingressIntf_;
  L2Header l2Header_;
  std::array<Wirx::MplsLabelEntry, maxMplsLabels> mplsLabel_{};
  Orv::U8 numMplsLabels_ = 0;
  bool hasInnerL3Header_ = false;
  L3Header innerL3Header_;
};

} // namespace PacketTracer
