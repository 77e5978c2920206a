#pragma once

#include "LspPing/LspPingClientRoot.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace LspPing {

// Where a hosting agent starts the library: it creates one by name (also
// through the runtime's factories, as "LspPing::LspPingUtilRoot") and
// starts the ping client side in it, handing in the platform state the
// client needs. Dropping the client root tears the client side down.
class LSPPING_EXPORT LspPingUtilRoot : public Orv::NamedEntity {
public:
  static constexpr Orv::Attr<Orv::Ptr<LspPingClientRoot>> lspPingClientRootAttr{
      1};

  explicit LspPingUtilRoot(const Orv::Name &name) : NamedEntity(name) {}
  ~LspPingUtilRoot() override;

  const Orv::Ptr<LspPingClientRoot> &lspPingClientRoot() const {
    return lspPingClientRoot_;
  }
  // Starts the client side when it is not running, and returns it.
  Orv::Ptr<LspPingClientRoot> lspPingClientRootIs(
      Orv::Ptr<const Interface::AllIntfStatusDir> allIntfStatusDir,
      Orv::Ptr<const Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir,
      Orv::Ptr<const KernelNetInfo::Status> kniStatus,
      Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
      Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
      Orv::Ptr<Wirx::UdpPam> lspPingClientUdpPam,
      Orv::Ptr<Kiv::TimerWheel> timerWheel);
  void lspPingClientRootDel();

private:
  Orv::Ptr<LspPingClientRoot> lspPingClientRoot_;
};

LSPPING_EXPORT Orv::Ptr<LspPingUtilRoot>
lspPingUtilRootFactory(const Orv::Name &name);

} // namespace LspPing
