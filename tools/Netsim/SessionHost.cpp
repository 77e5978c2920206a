#include "Netsim/SessionHost.h"

#include "Netsim/Link.h"
#include "Netsim/Network.h"

namespace Netsim {

Kiv::TimerWheel &SessionHost::timerWheel() const {
  return *router_.network().timerWheel();
}

Session::IngressPath
SessionHost::ingressPath(const Session::Target &target) const {
  Session::IngressPath path;
  path.src = target.src;
  if (!target.labels.empty()) {
    path.intf = target.intf;
    path.nexthop = target.nexthop;
    path.labels = target.labels;
  } else {
    const ForwardingState &state = router_.forwardingState();
    const Mesk::FibForwardingStatus &fib =
        target.fec.af() == Wirx::AddrFamily::ipv6
            ? static_cast<const Mesk::FibForwardingStatus &>(*state.fib6)
            : *state.fib;
    const Mesk::FibFec *fec =
        fib.fecTable().find(Mpls::FwdEqvClass{target.fec});
    if (!fec || fec->via.empty()) {
      path.error = router_.name() + ": no route to " + target.fec.stringValue();
      return path;
    }
    const Mesk::FibVia &via = fec->via.begin()->value;
    path.intf = via.intfId;
    path.nexthop = via.nexthop;
    for (const Wirx::MplsLabelEntry &entry : via.labelStack) {
      path.labels.push_back(entry.label());
    }
  }
  path.srcEthAddr = router_.ethAddr(path.intf);
  if (!path.srcEthAddr) {
    path.error =
        router_.name() + ": " + path.intf.name() + ": no such interface";
    return path;
  }
  const Link *link = router_.link(path.intf);
  if (!link) {
    path.error = router_.name() + ": " + path.intf.name() + ": no link";
    return path;
  }
  const Link::End &peer = link->peer(router_, path.intf);
  path.nexthopEthAddr = peer.router->ethAddr(peer.intfId);
  if (!path.nexthop) {
    path.nexthop = peer.router->addr();
  }
  if (!path.src) {
    const auto status = router_.vrfIpIntfStatus()->ipIntfStatus(path.intf);
    path.src = status && !status->addr().empty()
                   ? Wirx::IpGenAddr(status->addr().begin()->first)
                   : Wirx::IpGenAddr(router_.addr());
  }
  if (const auto status = router_.allIntfStatusDir()->intfStatus(path.intf)) {
    path.mtu = status->mtu();
  }
  return path;
}

} // namespace Netsim
