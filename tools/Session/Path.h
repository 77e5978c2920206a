#pragma once

#include <vector>

#include "Session/Hop.h"
#include "Wirx/IpGenAddr.h"

namespace Session {

// One way through the network from the ingress to where a trace stopped,
// hop by hop from TTL 1.
struct Path {
  enum class End {
    // The last hop is the FEC's egress.
    egress,
    // The last hop answered with a code that ends the path.
    failed,
    // Too many hops in a row did not answer.
    lost,
    // The TTL limit came first.
    ttlLimit,
  };

  std::vector<Hop> hops;
  // The IP destinations of the requests that take this path.
  std::vector<Wirx::IpGenAddr> destinations;
  End end = End::egress;
};

} // namespace Session
