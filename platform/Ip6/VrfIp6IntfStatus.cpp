#include "Ip6/VrfIp6IntfStatus.h"

#include "Orv/RangeError.h"

namespace Ip6 {

void VrfIp6IntfStatus::addrIs(const Wirx::IntfId &intf,
                              const Wirx::Ip6Addr &addr, Orv::U8 prefixLength) {
  if (prefixLength > maxPrefixLength) {
    throw Orv::RangeError(
        "Ip6IntfStatus::prefixLength > VrfIp6IntfStatus::maxPrefixLength not "
        "allowed");
  }
  Orv::Ptr<Ip6IntfStatus> status = ip6IntfStatus_[intf];
  if (status) {
    status->addrIs(addr, prefixLength);
    return;
  }
  // Filled before it is entered, so that watchers never see it empty.
  status = Orv::make<Ip6IntfStatus>(intf);
  status->addrIs(addr, prefixLength);
  ip6IntfStatus_.is(intf, status);
}

void VrfIp6IntfStatus::addrDel(const Wirx::IntfId &intf,
                               const Wirx::Ip6Addr &addr) {
  const Orv::Ptr<Ip6IntfStatus> status = ip6IntfStatus_[intf];
  if (!status) {
    return;
  }
  status->addrDel(addr);
  if (status->addr().empty()) {
    ip6IntfStatus_.del(intf);
  }
}

} // namespace Ip6
