#pragma once

#include "Interface/DeviceIntfStatusDir.h"
#include "Interface/EthDevPamCollection.h"
#include "Interface/EthDevPamManager.h"
#include "Interface/PamDesiredIntfDir.h"
#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Wirx/NamespaceName.h"

namespace LspPing {

// Owns the platform's Ethernet-device PAM manager for the ping client and
// sets it up for echo requests: one raw module per desired interface of the
// namespace, for MPLS unicast frames only, jumbo-sized, without broadcasts.
class LSPPING_EXPORT LspPingEthDevPamManager : public Orv::NamedEntity {
public:
  // The largest frame the modules receive: a jumbo frame.
  static constexpr U32 maxRxPktData = 9600;

  LspPingEthDevPamManager(
      const Orv::Name &name, const Wirx::NamespaceName &netNs,
      Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir,
      Orv::Ptr<const Interface::PamDesiredIntfDir> desiredIntfDir,
      Orv::Ptr<Interface::EthDevPamCollection> pamCollection);
  ~LspPingEthDevPamManager() override;

  const Wirx::NamespaceName &netNs() const { return netNs_; }
  const Orv::Ptr<const Interface::DeviceIntfStatusDir> &
  deviceIntfStatusDir() const {
    return deviceIntfStatusDir_;
  }
  const Orv::Ptr<const Interface::PamDesiredIntfDir> &desiredIntfDir() const {
    return desiredIntfDir_;
  }
  const Orv::Ptr<Interface::EthDevPamCollection> &pamCollection() const {
    return pamCollection_;
  }
  const Orv::Ptr<Interface::EthDevPamManager> &ethDevPamManager() const {
    return ethDevPamManager_;
  }
  bool initialized() const { return initialized_; }

  void handleInitialized();

private:
  // Creates the platform manager when there is none.
  void ethDevPamManagerIs(
      const Orv::Ptr<const Interface::PamDesiredIntfDir> &desiredIntfDir,
      const Orv::Ptr<Interface::EthDevPamCollection> &pamCollection,
      const Orv::Ptr<const Interface::DeviceIntfStatusDir>
          &deviceIntfStatusDir);

  const Wirx::NamespaceName netNs_;
  const Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir_;
  const Orv::Ptr<const Interface::PamDesiredIntfDir> desiredIntfDir_;
  const Orv::Ptr<Interface::EthDevPamCollection> pamCollection_;
  Orv::Ptr<Interface::EthDevPamManager> ethDevPamManager_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingEthDevPamManager> lspPingEthDevPamManagerFactory(
    const Orv::Name &name, const Wirx::NamespaceName &netNs,
    Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir,
    Orv::Ptr<const Interface::PamDesiredIntfDir> desiredIntfDir,
    Orv::Ptr<Interface::EthDevPamCollection> pamCollection);

} // namespace LspPing
