#pragma once

#include "Mpls/LfibExtFecVia.h"
#include "Mpls/LfibRoute.h"
#include "Mpls/LfibVia.h"
#include "Mpls/LfibViaSet.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Ruvo/ShmTable.h"

namespace Mpls {

// The transit label forwarding table as the MPLS agent publishes it: routes
// by incoming label, each naming a via set; via sets, each an ordered array
// of via keys; and the two via tables those keys index, plain label vias
// and extended-FEC vias, as the via set's type says. Readers look entries
// up through the tables (find, get); the setters are for the table's
// writer, tests and state loaders. Each table is named after the entity,
// "<name>/route", "<name>/viaSet", "<name>/via" and "<name>/extFecVia".
class LSPPING_EXPORT LfibStatus : public Orv::NamedEntity {
public:
  using RouteTable = Ruvo::ShmTable<RouteKey, LfibRoute>;
  using ViaSetTable = Ruvo::ShmTable<LfibViaSetKey, LfibViaSet>;
  using ViaTable = Ruvo::ShmTable<LfibViaKey, LfibVia>;
  using ExtFecViaTable = Ruvo::ShmTable<LfibViaKey, LfibExtFecVia>;

  explicit LfibStatus(const Orv::Name &name);

  const RouteTable &routeTable() const { return routeTable_; }
  RouteTable &routeTable() { return routeTable_; }
  const ViaSetTable &viaSetTable() const { return viaSetTable_; }
  ViaSetTable &viaSetTable() { return viaSetTable_; }
  const ViaTable &viaTable() const { return viaTable_; }
  ViaTable &viaTable() { return viaTable_; }
  const ExtFecViaTable &extFecViaTable() const { return extFecViaTable_; }
  ExtFecViaTable &extFecViaTable() { return extFecViaTable_; }

  // Stores the route under its own key.
  void routeIs(const LfibRoute &route) { routeTable_.is(route.key, route); }
  void routeDel(const RouteKey &key) { routeTable_.del(key); }
  void viaSetIs(const LfibViaSetKey &key, const LfibViaSet &viaSet) {
    viaSetTable_.is(key, viaSet);
  }
  void viaSetDel(const LfibViaSetKey &key) { viaSetTable_.del(key); }
  void viaIs(const LfibViaKey &key, const LfibVia &via) {
    viaTable_.is(key, via);
  }
  void viaDel(const LfibViaKey &key) { viaTable_.del(key); }
  void extFecViaIs(const LfibViaKey &key, const LfibExtFecVia &via) {
    extFecViaTable_.is(key, via);
  }
  void extFecViaDel(const LfibViaKey &key) { extFecViaTable_.del(key); }

  // One handler for all four tables.
  void corruptionHandlerIs(const Ruvo::CorruptionHandler &handler);

private:
  RouteTable routeTable_;
  ViaSetTable viaSetTable_;
  ViaTable viaTable_;
  ExtFecViaTable extFecViaTable_;
};

} // namespace Mpls
