#pragma once

#include <utility>
#include <vector>

#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Wirx/IntfId.h"
#include "Wirx/MplsLabelEntry.h"

namespace PacketTracer {

// What the hardware would do with a traced packet. Immutable once
// published: readers share it.
class LSPPING_EXPORT Result : public Orv::Object {
public:
  enum class Verdict : Orv::U8 {
    // Sent out of `egressIntf` with `egressLabels` on top.
    forwarded,
    // Discarded by the hardware.
    dropped,
    // Handed to the control plane.
    trapped,
  };

  Result(Verdict verdict, Wirx::IntfId egressIntf,
         std::vector<Wirx::MplsLabelEntry> egressLabels) noexcept
      : verdict_(verdict), egressIntf_(std::move(egressIntf)),
        egressLabels_(std::move(egressLabels)) {}

  Verdict verdict() const noexcept { return verdict_; }
  // Unset unless forwarded.
  const Wirx::IntfId &egressIntf() const noexcept { return egressIntf_; }
  // The stack the packet leaves with, top first; empty when it leaves
  // unlabelled or not at all.
  const std::vector<Wirx::MplsLabelEntry> &egressLabels() const noexcept {
    return egressLabels_;
  }

private:
  const Verdict verdict_;
  const Wirx::IntfId egressIntf_;
  const std::vector<Wirx::MplsLabelEntry> egressLabels_;
};

} // namespace PacketTracer
