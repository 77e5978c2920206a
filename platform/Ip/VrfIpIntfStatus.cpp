#include "Ip/VrfIpIntfStatus.h"

#include "Orv/RangeError.h"

namespace Ip {

void VrfIpIntfStatus::addrIs(const Wirx::IntfId &intf, const Wirx::IpAddr &addr,
                             Orv::U8 prefixLength) {
  if (prefixLength > maxPrefixLength) {
    throw Orv::RangeError(
        "IpIntfStatus::prefixLength > VrfIpIntfStatus::maxPrefixLength not "
        "allowed");
  }
  Orv::Ptr<IpIntfStatus> status = ipIntfStatus_[intf];
  if (status) {
    status->addrIs(addr, prefixLength);
    return;
  }
  // Filled before it is entered, so that watchers never see it empty.
  status = Orv::make<IpIntfStatus>(intf);
  status->addrIs(addr, prefixLength);
  ipIntfStatus_.is(intf, status);
}

void VrfIpIntfStatus::addrDel(const Wirx::IntfId &intf,
                              const Wirx::IpAddr &addr) {
  const Orv::Ptr<IpIntfStatus> status = ipIntfStatus_[intf];
  if (!status) {
    return;
  }
  status->addrDel(addr);
  if (status->addr().empty()) {
    ipIntfStatus_.del(intf);
  }
}

} // namespace Ip
