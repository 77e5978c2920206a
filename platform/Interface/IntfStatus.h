#pragma once

#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Orv/Types.h"
#include "Wirx/IntfId.h"

namespace Interface {

// The status of one interface as the interface manager publishes it; named
// after the interface. An MTU of 0 means the manager has not learnt it.
class LSPPING_EXPORT IntfStatus : public Orv::NamedEntity {
public:
  static constexpr Orv::Attr<Orv::U32> mtuAttr{1};

  explicit IntfStatus(const Wirx::IntfId &intfId)
      : NamedEntity(Orv::Name(intfId.name())), intfId_(intfId) {}

  const Wirx::IntfId &intfId() const { return intfId_; }
  // The largest IP packet the interface sends, in bytes.
  Orv::U32 mtu() const { return mtu_; }
  void mtuIs(Orv::U32 mtu) { assign(mtu_, mtu, mtuAttr); }

private:
  Wirx::IntfId intfId_;
  Orv::U32 mtu_ = 0;
};

} // namespace Interface
