#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Kiv/TimerWheel.h"
#include "Netsim/Datagram.h"
#include "Netsim/DelayLine.h"
#include "Netsim/ForwardingState.h"
#include "Netsim/Link.h"
#include "Netsim/Router.h"

namespace Netsim {

// Routers joined by links, in one process and on one timer wheel: whatever
// drives the wheel (Kiv::VirtualTime in tests, Kiv::EventLoop in real time)
// runs the whole network, so a round trip takes exactly the delays of the
// paths it went over.
//
// UDP datagrams go from the sending router to the router that owns the
// destination address, after the delay of the quickest path over links that
// are up, or `defaultDelay` when there is none (IP routing is not
// modelled: datagrams take the best path, whatever the routers' tables).
//
// Routers and links live as long as the network.
class Network {
public:
  // Sees each datagram as it arrives at `to`, before any module takes it.
  using DatagramTap = std::function<void(const Router &to, const Datagram &)>;
  // Sees each frame as it arrives on an interface of `to`, before the router
  // takes it.
  using FrameTap = std::function<void(const Router &to, const Wirx::IntfId &,
                                      const Wirx::Pkt &frame)>;

  explicit Network(Orv::Ptr<Kiv::TimerWheel> timerWheel);
  Network(const Network &) = delete;
  Network &operator=(const Network &) = delete;
  ~Network();

  const Orv::Ptr<Kiv::TimerWheel> &timerWheel() const { return timerWheel_; }

  // A new router; names are unique. `addr6` may be left unset.
  Router &routerIs(const std::string &name, const Wirx::IpAddr &addr,
                   const ForwardingState &state = ForwardingState(),
                   const Wirx::Ip6Addr &addr6 = Wirx::Ip6Addr());
  // The router of that name, or null.
  Router *router(const std::string &name) const;
  // The router that owns `addr`, or null.
  Router *addrOwner(const Wirx::IpGenAddr &addr) const;

  // Joins two interfaces, each of which has no link yet.
  Link &linkIs(Router &a, const Wirx::IntfId &aIntfId, Router &b,
               const Wirx::IntfId &bIntfId, double delay = Link::defaultDelay);

  double defaultDelay() const { return defaultDelay_; }
  void defaultDelayIs(double seconds) { defaultDelay_ = seconds; }
  // The delay of datagrams from `from` to `to`: the sum of the link delays
  // along the quickest path of links that are up.
  double pathDelay(const Router &from, const Router &to) const;
  // For Link: a link's delay or state changed, and with it the paths.
  void linksChanged() { pathDelays_.clear(); }

  // Sends `datagram` from `from`; false when no router owns its
  // destination address.
  bool datagramIs(const Router &from, Datagram datagram);
  // Installs a tap on every arrival, or removes it with an empty one.
  void datagramTapIs(DatagramTap tap) { datagramTap_ = std::move(tap); }
  void frameTapIs(FrameTap tap) { frameTap_ = std::move(tap); }
  const FrameTap &frameTap() const { return frameTap_; }

private:
  using RouterPair = std::pair<const Router *, const Router *>;

  DelayLine<Datagram> &udpPath(const Router &from, Router &to);
  double quickestPath(const Router &from, const Router &to) const;

  const Orv::Ptr<Kiv::TimerWheel> timerWheel_;
  double defaultDelay_ = Link::defaultDelay;
  DatagramTap datagramTap_;
  FrameTap frameTap_;
  std::vector<std::unique_ptr<Router>> routers_;
  std::vector<std::unique_ptr<Link>> links_;
  std::map<RouterPair, std::unique_ptr<DelayLine<Datagram>>> udpPaths_;
  // What pathDelay found, until the links change.
  mutable std::map<RouterPair, double> pathDelays_;
};

} // namespace Netsim
