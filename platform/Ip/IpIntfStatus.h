#pragma once

#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpAddr.h"

namespace Ip {

class VrfIpIntfStatus;

// The IPv4 addresses of one interface, each with its prefix length. It is
// written only through its VRF's VrfIpIntfStatus, which drops it with its
// last address: a status that exists has at least one address.
class LSPPING_EXPORT IpIntfStatus : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<Wirx::IpAddr> addrAttr{1};

  explicit IpIntfStatus(const Wirx::IntfId &intfId) : intfId_(intfId) {}

  const Wirx::IntfId &intfId() const { return intfId_; }
  // Address to prefix length.
  const Orv::Coll<Wirx::IpAddr, Orv::U8> &addr() const { return addr_; }

private:
  friend class VrfIpIntfStatus;

  void addrIs(const Wirx::IpAddr &addr, Orv::U8 prefixLength) {
    addr_.is(addr, prefixLength);
  }
  void addrDel(const Wirx::IpAddr &addr) { addr_.del(addr); }

  Wirx::IntfId intfId_;
  Orv::Coll<Wirx::IpAddr, Orv::U8> addr_{*this, addrAttr};
};

} // namespace Ip
