#pragma once

#include "Interface/IntfStatus.h"
#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace Interface {

// The status of every interface of the system, as the interface manager
// publishes it, whatever namespace or processor its device is in. Watchers
// learn of each interface whose status comes or goes; changes within a
// status notify the IntfStatus itself.
class LSPPING_EXPORT AllIntfStatusDir : public Orv::NamedEntity {
public:
  static constexpr Orv::CollAttr<Wirx::IntfId> intfStatusAttr{1};

  explicit AllIntfStatusDir(const Orv::Name &name) : NamedEntity(name) {}

  const Orv::Coll<Wirx::IntfId, Orv::Ptr<IntfStatus>> &intfStatus() const {
    return intfStatus_;
  }
  // The interface's status, or null.
  Orv::Ptr<const IntfStatus> intfStatus(const Wirx::IntfId &intf) const {
    return intfStatus_[intf];
  }
  // The existing status, or a new one with the MTU unknown.
  Orv::Ptr<IntfStatus> intfStatusIs(const Wirx::IntfId &intf);
  void intfStatusDel(const Wirx::IntfId &intf) { intfStatus_.del(intf); }

private:
  Orv::Coll<Wirx::IntfId, Orv::Ptr<IntfStatus>> intfStatus_{*this,
                                                            intfStatusAttr};
};

} // namespace Interface
