#pragma once

#include "Interface/AllIntfStatusDir.h"
#include "Interface/AllIntfStatusLocalDir.h"
#include "Interface/DeviceIntfStatusDir.h"
#include "Interface/EthDevPamCollection.h"
#include "Interface/NetNsIntfStatusManagerRoot.h"
#include "Interface/PamDesiredIntfDir.h"
#include "Ip/VrfIpIntfStatus.h"
#include "Ip6/VrfIp6IntfStatus.h"
#include "KernelNetInfo/Status.h"
#include "Kiv/TimerWheel.h"
#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientConfigSm.h"
#include "LspPing/LspPingClientListenerSm.h"
#include "LspPing/LspPingClientRxMsgPipeColl.h"
#include "LspPing/LspPingClientSmColl.h"
#include "LspPing/LspPingClientSmManager.h"
#include "LspPing/LspPingClientStatusColl.h"
#include "LspPing/LspPingEthDevPamManager.h"
#include "LspPing/LspPingPamDesiredIntfSm.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/UdpPam.h"

namespace LspPing {

// The ping client side of an agent. Given the platform state it needs, it
// creates, in this order, the directories and collections it owns:
//   "disd" the device interfaces of the default namespace,
//   "pdid" the interfaces that want a raw packet-access module,
//   "edpc" the raw modules opened on them,
//   "lpccc" the client configurations (written by the host),
//   "lpcsc" the client statuses (read by the host),
//   "lpcsmc" the clients' state machines,
//   "lpcrpc" the clients' receive pipes;
// then the state machines that tie them together, each before the ones that
// rely on it: the interface-status manager fills "disd"; the desired
// interfaces follow the default VRF's IP interface status; the PAM manager
// opens a module per desired interface; the state-machine manager gives
// every client its transmit machine before the configuration machine, which
// expects one, hears of the client; the listener comes last. Interfaces with
// IP status at start-up thus have their modules before any client is
// configured. Everything goes with the root, in the reverse order.
class LSPPING_EXPORT LspPingClientRoot : public Orv::Entity {
public:
  static constexpr Orv::Attr<bool> initializedAttr{1};

  // Either VRF status may be null, for an IP family the host does not run.
  LspPingClientRoot(
      Orv::Ptr<const Interface::AllIntfStatusDir> allIntfStatusDir,
      Orv::Ptr<const Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir,
      Orv::Ptr<const KernelNetInfo::Status> kniStatus,
      Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
      Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
      Orv::Ptr<Wirx::UdpPam> lspPingClientUdpPam,
      Orv::Ptr<Kiv::TimerWheel> timerWheel);
  ~LspPingClientRoot() override;

  const Orv::Ptr<const Interface::AllIntfStatusDir> &allIntfStatusDir() const {
    return allIntfStatusDir_;
  }
  const Orv::Ptr<const Interface::AllIntfStatusLocalDir> &
  allIntfStatusLocalDir() const {
    return allIntfStatusLocalDir_;
  }
  const Orv::Ptr<const KernelNetInfo::Status> &kniStatus() const {
    return kniStatus_;
  }
  const Orv::Ptr<const Ip::VrfIpIntfStatus> &vrfIpIntfStatus() const {
    return vrfIpIntfStatus_;
  }
  const Orv::Ptr<const Ip6::VrfIp6IntfStatus> &vrfIp6IntfStatus() const {
    return vrfIp6IntfStatus_;
  }
  const Orv::Ptr<Wirx::UdpPam> &lspPingClientUdpPam() const {
    return lspPingClientUdpPam_;
  }
  const Orv::Ptr<Kiv::TimerWheel> &timerWheel() const { return timerWheel_; }

  const Orv::Ptr<Interface::DeviceIntfStatusDir> &deviceIntfStatusDir() const {
    return deviceIntfStatusDir_;
  }
  const Orv::Ptr<Interface::PamDesiredIntfDir> &pamDesiredIntfDir() const {
    return pamDesiredIntfDir_;
  }
  const Orv::Ptr<Interface::EthDevPamCollection> &ethDevPamCollection() const {
    return ethDevPamCollection_;
  }
  const Orv::Ptr<LspPingClientConfigColl> &lspPingClientConfigColl() const {
    return lspPingClientConfigColl_;
  }
  const Orv::Ptr<LspPingClientStatusColl> &lspPingClientStatusColl() const {
    return lspPingClientStatusColl_;
  }
  const Orv::Ptr<LspPingClientSmColl> &lspPingClientSmColl() const {
    return lspPingClientSmColl_;
  }
  const Orv::Ptr<LspPingClientRxMsgPipeColl> &
  lspPingClientRxMsgPipeColl() const {
    return lspPingClientRxMsgPipeColl_;
  }

  const Orv::Ptr<Interface::NetNsIntfStatusManagerRoot> &
  intfStatusManagerRoot() const {
    return intfStatusManagerRoot_;
  }
  const Orv::Ptr<LspPingPamDesiredIntfSm> &lspPingPamDesiredIntfSm() const {
    return lspPingPamDesiredIntfSm_;
  }
  const Orv::Ptr<LspPingEthDevPamManager> &lspPingEthDevPamManager() const {
    return lspPingEthDevPamManager_;
  }
  const Orv::Ptr<LspPingClientSmManager> &lspPingClientSmManager() const {
    return lspPingClientSmManager_;
  }
  const Orv::Ptr<LspPingClientConfigSm> &lspPingClientConfigSm() const {
    return lspPingClientConfigSm_;
  }
  const Orv::Ptr<LspPingClientListenerSm> &lspPingClientListenerSm() const {
    return lspPingClientListenerSm_;
  }
  bool initialized() const { return initialized_; }

  // Creates the state machines that are missing. A VRF name past its bound
  // is refused with Orv::RangeError.
  void handleInitialized();

private:
  // Each makes the owned entity with its short name, as a child of the root.
  void deviceIntfStatusDirIs(const Orv::Name &name);
  void pamDesiredIntfDirIs(const Orv::Name &name);
  void ethDevPamCollectionIs(const Orv::Name &name);
  void lspPingClientConfigCollIs(const Orv::Name &name);
  void lspPingClientStatusCollIs(const Orv::Name &name);
  void lspPingClientSmCollIs(const Orv::Name &name);
  void lspPingClientRxMsgPipeCollIs(const Orv::Name &name);

  // Each creates its state machine when there is none.
  void intfStatusManagerRootIs(
      const Orv::Ptr<const Interface::AllIntfStatusDir> &allIntfStatusDir,
      const Orv::Ptr<const Interface::AllIntfStatusLocalDir>
          &allIntfStatusLocalDir,
      bool filterByNetNs);
  void lspPingPamDesiredIntfSmIs(
      const L3::VrfName &vrfName,
      const Orv::Ptr<const Ip::VrfIpIntfStatus> &vrfIpIntfStatus,
      const Orv::Ptr<const Ip6::VrfIp6IntfStatus> &vrfIp6IntfStatus,
      const Orv::Ptr<Interface::PamDesiredIntfDir> &pamDesiredIntfDir);
  void lspPingEthDevPamManagerIs(
      const Orv::Name &name, const Wirx::NamespaceName &netNs,
      const Orv::Ptr<const Interface::DeviceIntfStatusDir> &deviceIntfStatusDir,
      const Orv::Ptr<const Interface::PamDesiredIntfDir> &pamDesiredIntfDir,
      const Orv::Ptr<Interface::EthDevPamCollection> &ethDevPamCollection);
  void lspPingClientSmManagerIs(
      const Orv::Ptr<const LspPingClientConfigColl> &lspPingClientConfigColl,
      const Orv::Ptr<LspPingClientStatusColl> &lspPingClientStatusColl,
      const Orv::Ptr<LspPingClientSmColl> &lspPingClientSmColl,
      const Orv::Ptr<LspPingClientRxMsgPipeColl> &lspPingClientRxMsgPipeColl,
      const Orv::Ptr<Kiv::TimerWheel> &timerWheel);
  void lspPingClientConfigSmIs(
      const Orv::Ptr<LspPingClientConfigColl> &lspPingClientConfigColl,
      const Orv::Ptr<LspPingClientStatusColl> &lspPingClientStatusColl,
      const Orv::Ptr<const LspPingClientSmColl> &lspPingClientSmColl,
      const Orv::Ptr<const Interface::EthDevPamCollection> &ethDevPamCollection,
      const Orv::Ptr<Kiv::TimerWheel> &timerWheel);
  void lspPingClientListenerSmIs(
      const Orv::Ptr<Wirx::UdpPam> &udpPam,
      const Orv::Ptr<LspPingClientRxMsgPipeColl> &lspPingClientRxMsgPipeColl,
      const Orv::Ptr<Kiv::TimerWheel> &timerWheel,
      const Orv::Ptr<const LspPingClientConfigColl> &lspPingClientConfigColl);

  const Orv::Ptr<const Interface::AllIntfStatusDir> allIntfStatusDir_;
  const Orv::Ptr<const Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir_;
  const Orv::Ptr<const KernelNetInfo::Status> kniStatus_;
  const Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus_;
  const Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus_;
  const Orv::Ptr<Wirx::UdpPam> lspPingClientUdpPam_;
  const Orv::Ptr<Kiv::TimerWheel> timerWheel_;

  Orv::Ptr<Interface::DeviceIntfStatusDir> deviceIntfStatusDir_;
  Orv::Ptr<Interface::PamDesiredIntfDir> pamDesiredIntfDir_;
  Orv::Ptr<Interface::EthDevPamCollection> ethDevPamCollection_;
  Orv::Ptr<LspPingClientConfigColl> lspPingClientConfigColl_;
  Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl_;
  Orv::Ptr<LspPingClientSmColl> lspPingClientSmColl_;
  Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl_;

  Orv::Ptr<Interface::NetNsIntfStatusManagerRoot> intfStatusManagerRoot_;
  Orv::Ptr<LspPingPamDesiredIntfSm> lspPingPamDesiredIntfSm_;
  Orv::Ptr<LspPingEthDevPamManager> lspPingEthDevPamManager_;
  Orv::Ptr<LspPingClientSmManager> lspPingClientSmManager_;
  Orv::Ptr<LspPingClientConfigSm> lspPingClientConfigSm_;
  Orv::Ptr<LspPingClientListenerSm> lspPingClientListenerSm_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingClientRoot> lspPingClientRootFactory(
    Orv::Ptr<const Interface::AllIntfStatusDir> allIntfStatusDir,
    Orv::Ptr<const Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir,
    Orv::Ptr<const KernelNetInfo::Status> kniStatus,
    Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
    Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
    Orv::Ptr<Wirx::UdpPam> lspPingClientUdpPam,
    Orv::Ptr<Kiv::TimerWheel> timerWheel);

} // namespace LspPing
