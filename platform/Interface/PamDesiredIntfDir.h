#pragma once

#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Wirx/IntfId.h"

namespace Interface {

// The interfaces on which an agent wants a raw packet-access module: the
// request the Ethernet-device PAM manager fulfils. An interface is either
// desired or absent.
class LSPPING_EXPORT PamDesiredIntfDir : public Orv::NamedEntity {
public:
  static constexpr Orv::CollAttr<Wirx::IntfId> intfDesiredAttr{1};

  explicit PamDesiredIntfDir(const Orv::Name &name) : NamedEntity(name) {}

  const Orv::Coll<Wirx::IntfId, bool> &intfDesired() const {
    return intfDesired_;
  }
  bool intfDesired(const Wirx::IntfId &intf) const {
    return intfDesired_[intf];
  }
  // Not desiring an interface removes it.
  void intfDesiredIs(const Wirx::IntfId &intf, bool desired) {
    if (desired) {
      intfDesired_.is(intf, true);
    } else {
      intfDesired_.del(intf);
    }
  }
  void intfDesiredDel(const Wirx::IntfId &intf) { intfDesired_.del(intf); }

private:
  Orv::Coll<Wirx::IntfId, bool> intfDesired_{*this, intfDesiredAttr};
};

} // namespace Interface
