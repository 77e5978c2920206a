#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Orv/Export.h"
#include "Orv/ValueText.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/MplsLabel.h"
#include "Wirx/MplsLabelStack.h"

namespace Tunnel::TunnelTable {

// One TI-LFA repair tunnel: the interface and next hop its packets leave
// by, and the labels it pushes (the repair path's segments, top first). The
// default, which a lookup of an unknown tunnel reads, leaves by no
// interface.
struct TiLfaTunnelTableEntry {
  Wirx::IntfId intfId;
  Wirx::IpGenAddr nexthop;
  Wirx::MplsLabelStack labelStack;

  // The label the next hop receives on top: the stack's top label, or
  // implicit null when the tunnel pushes none (its tail is the next hop).
  Wirx::MplsLabel topLabel() const {
    return labelStack.empty() ? Wirx::MplsLabel(Wirx::MplsLabel::implicitNull)
                              : labelStack[0].label();
  }

  bool operator==(const TiLfaTunnelTableEntry &) const = default;
  bool operator!() const { return *this == TiLfaTunnelTableEntry(); }

  static constexpr std::string_view valueTypeName =
      "Tunnel::TunnelTable::TiLfaTunnelTableEntry";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"intfId", &TiLfaTunnelTableEntry::intfId},
                 Orv::Field{"nexthop", &TiLfaTunnelTableEntry::nexthop},
                 Orv::Field{"labelStack", &TiLfaTunnelTableEntry::labelStack}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const TiLfaTunnelTableEntry &entry);

} // namespace Tunnel::TunnelTable
