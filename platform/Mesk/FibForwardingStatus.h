#pragma once

#include "Mesk/FibFec.h"
#include "Mpls/FwdEqvClass.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Ruvo/ShmTable.h"
#include "Wirx/AddrFamily.h"

namespace Mesk {

// What the IPv4 and IPv6 forwarding statuses share: the forwarding entries
// of one address family, by FEC. Only FECs of that family are stored
// (fecIs refuses others), so looking up a FEC of the other family finds
// nothing. The table is named "<name>/fec" in corruption messages.
class LSPPING_EXPORT FibForwardingStatus : public Orv::NamedEntity {
public:
  using FecTable = Ruvo::ShmTable<Mpls::FwdEqvClass, FibFec>;

  Wirx::AddrFamily af() const { return af_; }

  const FecTable &fecTable() const { return fecTable_; }
  FecTable &fecTable() { return fecTable_; }

  // Throws Orv::RangeError for a FEC of the other family.
  void fecIs(const Mpls::FwdEqvClass &fec, const FibFec &entry);
  void fecDel(const Mpls::FwdEqvClass &fec) { fecTable_.del(fec); }

protected:
  FibForwardingStatus(const Orv::Name &name, Wirx::AddrFamily af);

private:
  Wirx::AddrFamily af_;
  FecTable fecTable_;
};

} // namespace Mesk
