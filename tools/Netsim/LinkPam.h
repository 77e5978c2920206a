#pragma once

#include "Wirx/IntfId.h"
#include "Wirx/Pam.h"

namespace Netsim {

class Router;

// The raw Ethernet packet-access module of one interface of a router: what
// is sent on it leaves the router on that interface, over the interface's
// link if it has one. Frames that arrive on the interface go to the
// router's receive path, not to the module, which never has any to read.
// It is writable from the start.
class LinkPam : public Wirx::Pam {
public:
  LinkPam(const Orv::Name &name, Router &router, const Wirx::IntfId &intfId);

  Router &router() const { return router_; }
  const Wirx::IntfId &intfId() const { return intfId_; }

  void txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) override;

private:
  void doGetRxPkt() override {}

  Router &router_;
  const Wirx::IntfId intfId_;
};

} // namespace Netsim
