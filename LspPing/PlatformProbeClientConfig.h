#pragma once

#include <memory>

#include "MplsUtils/EthPktParser.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpGenAddr.h"

namespace LspPing::PlatformProbe {

// One probe: a template packet to inject on an interface, traced once per
// destination address.
class LSPPING_EXPORT ClientConfig : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<Wirx::IpGenAddr> addrAttr{1};
  static constexpr Orv::Attr<Wirx::IntfId> ingressIntfAttr{2};
  static constexpr Orv::Attr<std::shared_ptr<const MplsUtils::EthPktParser>>
      pktAttr{3};

  explicit ClientConfig(Orv::U32 id) : id_(id) {}

  Orv::U32 id() const { return id_; }
  const Orv::Coll<Wirx::IpGenAddr, bool> &addr() const { return addr_; }
  bool addrHas(const Wirx::IpGenAddr &a) const { return addr_.contains(a); }
  const Wirx::IntfId &ingressIntf() const { return ingressIntf_; }
  // The parsed template packet: Ethernet header, label stack and, if any,
  // the IPv4 or IPv6 header under it.
  const std::shared_ptr<const MplsUtils::EthPktParser> &pkt() const {
    return pkt_;
  }

  void addrIs(const Wirx::IpGenAddr &a) { addr_.is(a, true); }
  void addrDel(const Wirx::IpGenAddr &a) { addr_.del(a); }
  void addrDelAll() { addr_.delAll(); }
  void ingressIntfIs(const Wirx::IntfId &v) {
    assign(ingressIntf_, v, ingressIntfAttr);
  }
  void pktIs(std::shared_ptr<const MplsUtils::EthPktParser> v) {
    assign(pkt_, v, pktAttr);
  }

private:
  const Orv::U32 id_;
  Orv::Coll<Wirx::IpGenAddr, bool> addr_{*this, addrAttr};
  Wirx::IntfId ingressIntf_;
  std::shared_ptr<const MplsUtils::EthPktParser> pkt_;
};

} // namespace LspPing::PlatformProbe
