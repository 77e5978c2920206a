#pragma once

#include <string_view>

#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Ruvo/ShmTable.h"
#include "Tunnel/TunnelId.h"
#include "Tunnel/TunnelTable/TiLfaTunnelTableEntry.h"
#include "Wirx/IntfId.h"

namespace Tunnel::TunnelTable {

// The TI-LFA repair tunnels by tunnel id. Forwarding entries that send a
// packet into a repair tunnel name the tunnel's interface as their own,
// "TiLfaTunnel<id>" (decimal id, no leading sign or blank); the static
// functions below recognise such interfaces and map between interface and
// id. The table is named "<name>/tunnel" in corruption messages.
class LSPPING_EXPORT TiLfaTunnelTable : public Orv::NamedEntity {
public:
  using EntryTable = Ruvo::ShmTable<TunnelId, TiLfaTunnelTableEntry>;

  static constexpr std::string_view intfNamePrefix = "TiLfaTunnel";

  explicit TiLfaTunnelTable(const Orv::Name &name);

  // True for "TiLfaTunnel" followed by one or more decimal digits, whatever
  // their value: an id out of range is still a tunnel interface, and
  // tunnelId() reports it.
  static bool isTiLfaTunnelIntf(const Wirx::IntfId &intf);
  // The tunnel id of a TI-LFA tunnel interface. Throws Orv::RangeError for
  // an id above TunnelId::maxValue. `intf` must be a TI-LFA tunnel
  // interface (asserted).
  static TunnelId tunnelId(const Wirx::IntfId &intf);
  // The interface of tunnel `id`, "TiLfaTunnel<id>".
  static Wirx::IntfId tunnelIntf(TunnelId id);

  const EntryTable &tunnelTable() const { return tunnelTable_; }
  EntryTable &tunnelTable() { return tunnelTable_; }

  void tunnelIs(TunnelId id, const TiLfaTunnelTableEntry &entry) {
    tunnelTable_.is(id, entry);
  }
  void tunnelDel(TunnelId id) { tunnelTable_.del(id); }

private:
  EntryTable tunnelTable_;
};

} // namespace Tunnel::TunnelTable
