#pragma once

#include "Netsim/Link.h"
#include "Netsim/Network.h"
#include "Netsim/Router.h"
#include "Wirx/IpGenPrefix.h"

namespace Netsim {

// Five routers to trace through, built on a network:
//
//   pe1 --- p1 ---- p2 ---- pe2
//            \              /
//             `--- p3 -----'
//
// pe1 reaches pe2's address 10.0.0.5/32 over LDP, pushing p1's label 1005.
// p1 spreads it over two vias by the packets' IP destination: to p2 with
// label 2005, and to p3 with label 3006. p2 and p3 pop towards pe2, the
// egress. The p3 branch is broken: p3 bound 10.0.0.5/32 to 3005, and 3006
// to 10.0.0.6/32. Routers are 10.0.0.1 to 10.0.0.5 in the order above,
// their LDP next hops name the neighbour's router address, and every link
// has the same delay. Requests to 127.0.0.1 take the healthy branch.
class TraceLab {
public:
  explicit TraceLab(Network &network, double linkDelay = Link::defaultDelay);
  TraceLab(const TraceLab &) = delete;
  TraceLab &operator=(const TraceLab &) = delete;

  // 10.0.0.5/32.
  static Wirx::IpGenPrefix fec();

  Router &pe1;
  Router &p1;
  Router &p2;
  Router &p3;
  Router &pe2;
  Link &pe1p1;
  Link &p1p2;
  Link &p1p3;
  Link &p2pe2;
  Link &p3pe2;
};

} // namespace Netsim
