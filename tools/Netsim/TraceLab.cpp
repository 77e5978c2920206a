#include "Netsim/TraceLab.h"

#include <string>
#include <utility>

namespace Netsim {

namespace {

using Wirx::IpAddr;
using Wirx::MplsLabel;

const Wirx::IntfId eth1("Ethernet1");
const Wirx::IntfId eth2("Ethernet2");
const Wirx::IntfId eth3("Ethernet3");

// Router n is 10.0.0.n.
IpAddr routerAddr(Orv::U32 n) { return IpAddr(0x0a000000 | n); }

// Joins interface `aIntf` of `a` to `bIntf` of `b` on subnet
// 10.1.`subnet`.0/30, a being .1 and b .2. Router 10.0.0.n's interface
// Ethernet i has MAC 02:00:00:00:0n:0i.
Link &joined(Network &network, Router &a, const Wirx::IntfId &aIntf, Router &b,
             const Wirx::IntfId &bIntf, Orv::U32 subnet, double delay) {
  Orv::U32 host = 1;
  for (auto [router, intf] : {std::pair{&a, &aIntf}, std::pair{&b, &bIntf}}) {
    const std::string mac = "02:00:00:00:0" +
                            std::to_string(router->addr().value() & 0xff) +
                            ":0" + intf->name().substr(intf->name().size() - 1);
    router->intfIs(*intf, *Wirx::EthAddr::fromString(mac),
                   IpAddr(0x0a010000 | subnet << 8 | host++), 30);
  }
  return network.linkIs(a, aIntf, b, bIntf, delay);
}

} // namespace

Wirx::IpGenPrefix TraceLab::fec() {
  return Wirx::IpGenPrefix(routerAddr(5), 32);
}

TraceLab::TraceLab(Network &network, double linkDelay)
    : pe1(network.routerIs("pe1", routerAddr(1))),
      p1(network.routerIs("p1", routerAddr(2))),
      p2(network.routerIs("p2", routerAddr(3))),
      p3(network.routerIs("p3", routerAddr(4))),
      pe2(network.routerIs("pe2", routerAddr(5))),
      pe1p1(joined(network, pe1, eth1, p1, eth1, 1, linkDelay)),
      p1p2(joined(network, p1, eth2, p2, eth1, 2, linkDelay)),
      p1p3(joined(network, p1, eth3, p3, eth1, 3, linkDelay)),
      p2pe2(joined(network, p2, eth2, pe2, eth1, 4, linkDelay)),
      p3pe2(joined(network, p3, eth2, pe2, eth2, 5, linkDelay)) {
  const Wirx::IpGenPrefix other(routerAddr(6), 32);
  pe1.forwardingState().fecRouteIs(fec(), eth1, routerAddr(2),
                                   {MplsLabel(1005)});
  p1.forwardingState().ldpBindingIs(fec(), MplsLabel(1005));
  p1.forwardingState().labelRouteIs(MplsLabel(1005),
                                    {{eth2, routerAddr(3), {MplsLabel(2005)}},
                                     {eth3, routerAddr(4), {MplsLabel(3006)}}});
  p2.forwardingState().ldpBindingIs(fec(), MplsLabel(2005));
  p2.forwardingState().labelRouteIs(MplsLabel(2005),
                                    {{eth2, routerAddr(5), {}}});
  p3.forwardingState().ldpBindingIs(fec(), MplsLabel(3005));
  p3.forwardingState().labelRouteIs(MplsLabel(3005),
                                    {{eth2, routerAddr(5), {}}});
  p3.forwardingState().ldpBindingIs(other, MplsLabel(3006));
  p3.forwardingState().labelRouteIs(MplsLabel(3006),
                                    {{eth2, routerAddr(5), {}}});
  pe2.forwardingState().ldpBindingIs(fec(), MplsLabel(3));
}

} // namespace Netsim
