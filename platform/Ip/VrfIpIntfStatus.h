#pragma once

#include "Ip/IpIntfStatus.h"
#include "L3/VrfName.h"
#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace Ip {

// The IPv4 status of the interfaces of one VRF, by interface. An interface
// is in it exactly while it has an IPv4 address in the VRF: watchers of
// ipIntfStatus learn of each interface that gets its first address or loses
// its last one; other address changes notify the interface's IpIntfStatus.
class LSPPING_EXPORT VrfIpIntfStatus : public Orv::NamedEntity {
public:
  static constexpr Orv::CollAttr<Wirx::IntfId> ipIntfStatusAttr{1};
  static constexpr Orv::U8 maxPrefixLength = 32;

  VrfIpIntfStatus(const Orv::Name &name, const L3::VrfName &vrfName)
      : NamedEntity(name), vrfName_(vrfName) {}

  const L3::VrfName &vrfName() const { return vrfName_; }
  const Orv::Coll<Wirx::IntfId, Orv::Ptr<IpIntfStatus>> &ipIntfStatus() const {
    return ipIntfStatus_;
  }
  // The interface's status, or null when it has no address.
  Orv::Ptr<const IpIntfStatus> ipIntfStatus(const Wirx::IntfId &intf) const {
    return ipIntfStatus_[intf];
  }

  // Adds `addr` to the interface, or changes its prefix length. A length
  // beyond 32 is refused with Orv::RangeError.
  void addrIs(const Wirx::IntfId &intf, const Wirx::IpAddr &addr,
              Orv::U8 prefixLength);
  // Removes `addr` from the interface, and the interface with its last one.
  void addrDel(const Wirx::IntfId &intf, const Wirx::IpAddr &addr);
  // Removes the interface with all its addresses.
  void ipIntfStatusDel(const Wirx::IntfId &intf) { ipIntfStatus_.del(intf); }

private:
  L3::VrfName vrfName_;
  Orv::Coll<Wirx::IntfId, Orv::Ptr<IpIntfStatus>> ipIntfStatus_{
      *this, ipIntfStatusAttr};
};

} // namespace Ip
