#pragma once

#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Wirx/IntfId.h"
#include "Wirx/Pam.h"

namespace Interface {

// The raw Ethernet packet-access modules the device manager has opened, one
// per interface. Watchers learn of each interface whose module comes, is
// replaced or goes.
class LSPPING_EXPORT EthDevPamCollection : public Orv::NamedEntity {
public:
  static constexpr Orv::CollAttr<Wirx::IntfId> intfPamAttr{1};

  explicit EthDevPamCollection(const Orv::Name &name) : NamedEntity(name) {}

  const Orv::Coll<Wirx::IntfId, Orv::Ptr<Wirx::Pam>> &intfPam() const {
    return intfPam_;
  }
  // The interface's module, or null.
  Orv::Ptr<Wirx::Pam> intfPam(const Wirx::IntfId &intf) const {
    return intfPam_[intf];
  }
  void intfPamIs(const Wirx::IntfId &intf, const Orv::Ptr<Wirx::Pam> &pam) {
    intfPam_.is(intf, pam);
  }
  void intfPamDel(const Wirx::IntfId &intf) { intfPam_.del(intf); }
  void intfPamDelAll() { intfPam_.delAll(); }

private:
  Orv::Coll<Wirx::IntfId, Orv::Ptr<Wirx::Pam>> intfPam_{*this, intfPamAttr};
};

} // namespace Interface
