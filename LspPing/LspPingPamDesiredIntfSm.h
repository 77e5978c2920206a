#pragma once

#include "Interface/PamDesiredIntfDir.h"
#include "Ip/VrfIpIntfStatus.h"
#include "Ip6/VrfIp6IntfStatus.h"
#include "L3/VrfName.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Reactor.h"
#include "Wirx/IntfId.h"

namespace LspPing {

// Management and internal interfaces never carry echo requests: no label
// switched path runs over them.
LSPPING_EXPORT bool isManagementOrInternalInterface(const Wirx::IntfId &intfId);

// Decides on which interfaces the ping client wants a raw Ethernet
// packet-access module: every interface with IPv4 or IPv6 status in the VRF,
// except management and internal ones. Each change of an interface's status
// in either family decides alone: both families share the interface's one
// entry in the desired directory, so an interface that loses its IPv6 status
// while keeping IPv4 is no longer desired until its IPv4 status next
// changes. Either status may be null, for a family the host does not run.
class LSPPING_EXPORT LspPingPamDesiredIntfSm : public Orv::Object,
                                               public Orv::Reactor {
public:
  LspPingPamDesiredIntfSm(
      const L3::VrfName &vrfName,
      Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
      Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
      Orv::Ptr<Interface::PamDesiredIntfDir> pamDesiredIntfDir);

  const L3::VrfName &vrfName() const { return vrfName_; }
  const Orv::Ptr<const Ip::VrfIpIntfStatus> &vrfIpIntfStatus() const {
    return vrfIpIntfStatus_;
  }
  const Orv::Ptr<const Ip6::VrfIp6IntfStatus> &vrfIp6IntfStatus() const {
    return vrfIp6IntfStatus_;
  }
  const Orv::Ptr<Interface::PamDesiredIntfDir> &pamDesiredIntfDir() const {
    return pamDesiredIntfDir_;
  }
  bool initialized() const { return initialized_; }

  void handleInitialized();
  // Every interface with IPv4 status, then one whose IPv4 status changed.
  void handleVrfIpIntf();
  void handleVrfIpIntf(const Wirx::IntfId &intfId);
  // The same for IPv6.
  void handleVrfIp6Intf();
  void handleVrfIp6Intf(const Wirx::IntfId &intfId);

private:
  // Enters or removes the interface as it has status in a family.
  void intfDesiredIs(const Wirx::IntfId &intfId, bool hasStatus);

  const L3::VrfName vrfName_;
  const Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus_;
  const Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus_;
  const Orv::Ptr<Interface::PamDesiredIntfDir> pamDesiredIntfDir_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingPamDesiredIntfSm> lspPingPamDesiredIntfSmFactory(
    const L3::VrfName &vrfName,
    Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
    Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
    Orv::Ptr<Interface::PamDesiredIntfDir> pamDesiredIntfDir);

} // namespace LspPing
