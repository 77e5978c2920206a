#pragma once

#include "Netsim/Router.h"
#include "Session/Host.h"

namespace Netsim {

// A router of the network as the host of ping and trace sessions: its
// client side, the network's timer wheel and its reply tap.
//
// Requests for a target that names its labels leave as the target says;
// otherwise by the router's own route to the FEC, the first via of its IPv4
// or IPv6 forwarding entry. The source is the target's, else the
// interface's first address; the MAC addresses are those at the two ends of
// the interface's link, the next hop the target's or the via's, else the
// router at the other end; the MTU is the interface's.
class SessionHost : public Session::Host {
public:
  explicit SessionHost(Router &router) : router_(router) {}

  Router &router() const { return router_; }

  LspPing::LspPingClientRoot &clientRoot() const override {
    return *router_.clientRoot();
  }
  Kiv::TimerWheel &timerWheel() const override;
  const Session::ReplyTap &replyTap() const override {
    return *router_.replyTap();
  }
  Session::IngressPath
  ingressPath(const Session::Target &target) const override;

private:
  Router &router_;
};

} // namespace Netsim
