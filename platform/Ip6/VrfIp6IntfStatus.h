#pragma once

#include "Ip6/Ip6IntfStatus.h"
#include "L3/VrfName.h"
#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace Ip6 {

// The IPv6 status of the interfaces of one VRF, by interface. An interface
// is in it exactly while it has an IPv6 address in the VRF: watchers of
// ip6IntfStatus learn of each interface that gets its first address or loses
// its last one; other address changes notify the interface's Ip6IntfStatus.
class LSPPING_EXPORT VrfIp6IntfStatus : public Orv::NamedEntity {
public:
  static constexpr Orv::CollAttr<Wirx::IntfId> ip6IntfStatusAttr{1};
  static constexpr Orv::U8 maxPrefixLength = 128;

  VrfIp6IntfStatus(const Orv::Name &name, const L3::VrfName &vrfName)
      : NamedEntity(name), vrfName_(vrfName) {}

  const L3::VrfName &vrfName() const { return vrfName_; }
  const Orv::Coll<Wirx::IntfId, Orv::Ptr<Ip6IntfStatus>> &
  ip6IntfStatus() const {
    return ip6IntfStatus_;
  }
  // The interface's status, or null when it has no address.
  Orv::Ptr<const Ip6IntfStatus> ip6IntfStatus(const Wirx::IntfId &intf) const {
    return ip6IntfStatus_[intf];
  }

  // Adds `addr` to the interface, or changes its prefix length. A length
  // beyond 128 is refused with Orv::RangeError.
  void addrIs(const Wirx::IntfId &intf, const Wirx::Ip6Addr &addr,
              Orv::U8 prefixLength);
  // Removes `addr` from the interface, and the interface with its last one.
  void addrDel(const Wirx::IntfId &intf, const Wirx::Ip6Addr &addr);
  // Removes the interface with all its addresses.
  void ip6IntfStatusDel(const Wirx::IntfId &intf) { ip6IntfStatus_.del(intf); }

private:
  L3::VrfName vrfName_;
  Orv::Coll<Wirx::IntfId, Orv::Ptr<Ip6IntfStatus>> ip6IntfStatus_{
      *this, ip6IntfStatusAttr};
};

} // namespace Ip6
