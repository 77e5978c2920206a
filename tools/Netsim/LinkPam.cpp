#include "Netsim/LinkPam.h"

#include "Netsim/Router.h"

namespace Netsim {

LinkPam::LinkPam(const Orv::Name &name, Router &router,
                 const Wirx::IntfId &intfId)
    : Pam(name), router_(router), intfId_(intfId) {
  writableCountInc(1);
}

void LinkPam::txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) {
  if (!router_.txFrameIs(intfId_, pkt)) {
    txDropsInc();
  }
}

} // namespace Netsim
