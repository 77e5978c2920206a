#pragma once

#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Wirx/IntfId.h"
#include "Wirx/Ip6Addr.h"

namespace Ip6 {

class VrfIp6IntfStatus;

// The IPv6 addresses of one interface, each with its prefix length. It is
// written only through its VRF's VrfIp6IntfStatus, which drops it with its
// last address: a status that exists has at least one address.
class LSPPING_EXPORT Ip6IntfStatus : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<Wirx::Ip6Addr> addrAttr{1};

  explicit Ip6IntfStatus(const Wirx::IntfId &intfId) : intfId_(intfId) {}

  const Wirx::IntfId &intfId() const { return intfId_; }
  // Address to prefix length.
  const Orv::Coll<Wirx::Ip6Addr, Orv::U8> &addr() const { return addr_; }

private:
  friend class VrfIp6IntfStatus;

  void addrIs(const Wirx::Ip6Addr &addr, Orv::U8 prefixLength) {
    addr_.is(addr, prefixLength);
  }
  void addrDel(const Wirx::Ip6Addr &addr) { addr_.del(addr); }

  Wirx::IntfId intfId_;
  Orv::Coll<Wirx::Ip6Addr, Orv::U8> addr_{*this, addrAttr};
};

} // namespace Ip6
