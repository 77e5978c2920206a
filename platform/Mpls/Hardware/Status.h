#pragma once

#include "Mpls/Hardware/RouteStatus.h"
#include "Mpls/LfibRoute.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Ruvo/ShmTable.h"

namespace Mpls::Hardware {

// What the hardware agent reports about the label routes it programs, by
// the same key as the label forwarding table. A route of the forwarding
// table with no entry here has not reached the hardware. The table is
// named "<name>/route" in corruption messages.
class LSPPING_EXPORT Status : public Orv::NamedEntity {
public:
  using RouteTable = Ruvo::ShmTable<RouteKey, RouteStatus>;

  explicit Status(const Orv::Name &name);

  const RouteTable &routeTable() const { return routeTable_; }
  RouteTable &routeTable() { return routeTable_; }

  void routeIs(const RouteKey &key, const RouteStatus &status) {
    routeTable_.is(key, status);
  }
  void routeDel(const RouteKey &key) { routeTable_.del(key); }

private:
  RouteTable routeTable_;
};

} // namespace Mpls::Hardware
