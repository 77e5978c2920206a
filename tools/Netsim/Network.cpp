#include "Netsim/Network.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Orv/Assert.h"

namespace Netsim {

Network::Network(Orv::Ptr<Kiv::TimerWheel> timerWheel)
    : timerWheel_(std::move(timerWheel)) {}

// What is under way goes first, then the links, then the routers.
Network::~Network() {
  udpPaths_.clear();
  links_.clear();
  routers_.clear();
}

Router &Network::routerIs(const std::string &name, const Wirx::IpAddr &addr,
                          const ForwardingState &state,
                          const Wirx::Ip6Addr &addr6) {
  ORV_ASSERT(!router(name));
  routers_.push_back(std::make_unique<Router>(*this, name, addr, addr6, state));
  return *routers_.back();
}

Router *Network::router(const std::string &name) const {
  for (const auto &router : routers_) {
    if (router->name() == name) {
      return router.get();
    }
  }
  return nullptr;
}

Router *Network::addrOwner(const Wirx::IpGenAddr &addr) const {
  for (const auto &router : routers_) {
    if (router->ownsAddr(addr)) {
      return router.get();
    }
  }
  return nullptr;
}

Link &Network::linkIs(Router &a, const Wirx::IntfId &aIntfId, Router &b,
                      const Wirx::IntfId &bIntfId, double delay) {
  ORV_ASSERT(!a.link(aIntfId) && !b.link(bIntfId));
  links_.push_back(std::make_unique<Link>(*this, Link::End{&a, aIntfId},
                                          Link::End{&b, bIntfId}, delay));
  linksChanged();
  Link &link = *links_.back();
  a.linkIs(aIntfId, &link);
  b.linkIs(bIntfId, &link);
  return link;
}

double Network::pathDelay(const Router &from, const Router &to) const {
  const auto [known, added] = pathDelays_.try_emplace({&from, &to}, 0.0);
  if (added) {
    known->second = quickestPath(from, to);
  }
  return known->second;
}

// Dijkstra over the routers, in their order of creation: networks here are
// a handful of routers, so a scan for the nearest one beats a heap.
double Network::quickestPath(const Router &from, const Router &to) const {
  constexpr double unreached = std::numeric_limits<double>::infinity();
  const std::size_t count = routers_.size();
  std::vector<double> delay(count, unreached);
  std::vector<bool> done(count, false);
  const auto index = [this](const Router *router) {
    std::size_t i = 0;
    while (routers_[i].get() != router) {
      ++i;
    }
    return i;
  };
  delay[index(&from)] = 0;
  for (std::size_t round = 0; round < count; ++round) {
    std::size_t nearest = count;
    for (std::size_t i = 0; i < count; ++i) {
      if (!done[i] && delay[i] != unreached &&
          (nearest == count || delay[i] < delay[nearest])) {
        nearest = i;
      }
    }
    if (nearest == count) {
      break;
    }
    done[nearest] = true;
    for (const auto &link : links_) {
      for (int end = 0; end < 2; ++end) {
        if (link->up() && link->end(end).router == routers_[nearest].get()) {
          const std::size_t next = index(link->end(1 - end).router);
          delay[next] = std::min(delay[next], delay[nearest] + link->delay());
        }
      }
    }
  }
  const double found = delay[index(&to)];
  return &from != &to && found != unreached ? found : defaultDelay_;
}

bool Network::datagramIs(const Router &from, Datagram datagram) {
  Router *const to = addrOwner(datagram.dstAddr);
  if (!to) {
    return false;
  }
  udpPath(from, *to).itemIs(std::move(datagram), pathDelay(from, *to));
  return true;
}

DelayLine<Datagram> &Network::udpPath(const Router &from, Router &to) {
  std::unique_ptr<DelayLine<Datagram>> &path = udpPaths_[{&from, &to}];
  if (!path) {
    path = std::make_unique<DelayLine<Datagram>>(
        *timerWheel_, [this, &to](std::vector<Datagram> &datagrams) {
          if (datagramTap_) {
            for (const Datagram &datagram : datagrams) {
              datagramTap_(to, datagram);
            }
          }
          to.rxDatagramsIs(datagrams);
        });
  }
  return *path;
}

} // namespace Netsim
