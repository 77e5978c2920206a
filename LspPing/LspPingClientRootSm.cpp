#include "LspPing/LspPingClientRoot.h"
#include "LspPing/LspPingEthDevPamManager.h"
#include "LspPing/LspPingPamDesiredIntfSm.h"
#include "LspPing/LspPingPktConstants.h"
#include "LspPing/LspPingUtilRoot.h"
#include "Orv/Factory.h"
#include "Orv/Trace.h"
#include "Wirx/InternalIntfId.h"
#include "Wirx/MgmtIntfId.h"

#include <vector>

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingClientRootSm");

const Orv::FactoryRegistration
    utilRootFactory("LspPing::LspPingUtilRoot",
                    [](const Orv::Name &name) -> Orv::Ptr<Orv::Object> {
                      return lspPingUtilRootFactory(name);
                    });

// The ping client runs in the VRF and namespace the system starts in.
const char *const clientVrf = "default";
const Orv::Name ethDevPamManagerName("edpm");

template <class T>
Orv::Ptr<T> adopted(const Orv::Entity &parent, Orv::Ptr<T> child) {
  child->parentIs(&parent);
  return child;
}

// Drops an entity the root owns; its host may still hold it, so it must not
// point back at a root that is gone.
template <class T> void disown(Orv::Ptr<T> &child) {
  if (child) {
    child->parentIs(nullptr);
    child = nullptr;
  }
}

} // namespace

bool isManagementOrInternalInterface(const Wirx::IntfId &intfId) {
  if (Wirx::InternalIntfId::isInternalIntfId(intfId)) {
    return true;
  }
  return Wirx::MgmtIntfId::isMgmtIntfId(intfId);
}

LspPingPamDesiredIntfSm::LspPingPamDesiredIntfSm(
    const L3::VrfName &vrfName,
    Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
    Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
    Orv::Ptr<Interface::PamDesiredIntfDir> pamDesiredIntfDir)
    : vrfName_(vrfName), vrfIpIntfStatus_(std::move(vrfIpIntfStatus)),
      vrfIp6IntfStatus_(std::move(vrfIp6IntfStatus)),
      pamDesiredIntfDir_(std::move(pamDesiredIntfDir)) {
  if (vrfIpIntfStatus_) {
    watch(*vrfIpIntfStatus_, Ip::VrfIpIntfStatus::ipIntfStatusAttr,
          [this](const Wirx::IntfId &intfId) { handleVrfIpIntf(intfId); });
  }
  if (vrfIp6IntfStatus_) {
    watch(*vrfIp6IntfStatus_, Ip6::VrfIp6IntfStatus::ip6IntfStatusAttr,
          [this](const Wirx::IntfId &intfId) { handleVrfIp6Intf(intfId); });
  }
  handleInitialized();
}

void LspPingPamDesiredIntfSm::handleInitialized() {
  ORV_TRACE(trace, 8,
            "void LspPing::LspPingPamDesiredIntfSm::handleInitialized()");
  initialized_ = true;
  handleVrfIpIntf();
  handleVrfIp6Intf();
}

void LspPingPamDesiredIntfSm::handleVrfIpIntf() {
  if (!vrfIpIntfStatus_) {
    return;
  }
  std::vector<Wirx::IntfId> intfIds;
  for (const auto &[intfId, status] : vrfIpIntfStatus_->ipIntfStatus()) {
    intfIds.push_back(intfId);
  }
  for (const Wirx::IntfId &intfId : intfIds) {
    handleVrfIpIntf(intfId);
  }
}

void LspPingPamDesiredIntfSm::handleVrfIpIntf(const Wirx::IntfId &intfId) {
  if (!initialized_ || !vrfIpIntfStatus_) {
    return;
  }
  intfDesiredIs(intfId, bool(vrfIpIntfStatus_->ipIntfStatus(intfId)));
}

void LspPingPamDesiredIntfSm::handleVrfIp6Intf() {
  if (!vrfIp6IntfStatus_) {
    return;
  }
  std::vector<Wirx::IntfId> intfIds;
  for (const auto &[intfId, status] : vrfIp6IntfStatus_->ip6IntfStatus()) {
    intfIds.push_back(intfId);
  }
  for (const Wirx::IntfId &intfId : intfIds) {
    handleVrfIp6Intf(intfId);
  }
}

void LspPingPamDesiredIntfSm::handleVrfIp6Intf(const Wirx::IntfId &intfId) {
  if (!initialized_ || !vrfIp6IntfStatus_) {
    return;
  }
  intfDesiredIs(intfId, bool(vrfIp6IntfStatus_->ip6IntfStatus(intfId)));
}

void LspPingPamDesiredIntfSm::intfDesiredIs(const Wirx::IntfId &intfId,
                                            bool hasStatus) {
  if (isManagementOrInternalInterface(intfId)) {
    ORV_TRACE(trace, 2, "Skip intf ", intfId);
    return;
  }
  if (hasStatus) {
    pamDesiredIntfDir_->intfDesiredIs(intfId, true);
    ORV_TRACE(trace, 2, "pamDesiredIntfDir Added ", intfId);
  } else {
    pamDesiredIntfDir_->intfDesiredDel(intfId);
    ORV_TRACE(trace, 2, "pamDesiredIntfDir Deleted ", intfId);
  }
}

Orv::Ptr<LspPingPamDesiredIntfSm> lspPingPamDesiredIntfSmFactory(
    const L3::VrfName &vrfName,
    Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
    Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
    Orv::Ptr<Interface::PamDesiredIntfDir> pamDesiredIntfDir) {
  return Orv::make<LspPingPamDesiredIntfSm>(vrfName, std::move(vrfIpIntfStatus),
                                            std::move(vrfIp6IntfStatus),
                                            std::move(pamDesiredIntfDir));
}

LspPingEthDevPamManager::LspPingEthDevPamManager(
    const Orv::Name &name, const Wirx::NamespaceName &netNs,
    Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir,
    Orv::Ptr<const Interface::PamDesiredIntfDir> desiredIntfDir,
    Orv::Ptr<Interface::EthDevPamCollection> pamCollection)
    : NamedEntity(name), netNs_(netNs),
      deviceIntfStatusDir_(std::move(deviceIntfStatusDir)),
      desiredIntfDir_(std::move(desiredIntfDir)),
      pamCollection_(std::move(pamCollection)) {
  handleInitialized();
}

LspPingEthDevPamManager::~LspPingEthDevPamManager() {
  disown(ethDevPamManager_);
}

void LspPingEthDevPamManager::handleInitialized() {
  ORV_TRACE(trace, 8,
            "void LspPing::LspPingEthDevPamManager::handleInitialized() "
            "netNs ",
            netNs_);
  initialized_ = true;
  ethDevPamManagerIs(desiredIntfDir_, pamCollection_, deviceIntfStatusDir_);
  // Everything is set before the manager is enabled, so that each module
  // is opened once, with its final settings.
  ethDevPamManager_->ethProtocolIs(LspPingPktConstants::mplsUnicast);
  ethDevPamManager_->netNsIs(netNs_);
  ethDevPamManager_->broadcastIs(false);
  ethDevPamManager_->maxRxPktDataIs(maxRxPktData);
  ethDevPamManager_->perIntfSocketIs(true);
  ethDevPamManager_->enabledIs(true);
}

void LspPingEthDevPamManager::ethDevPamManagerIs(
    const Orv::Ptr<const Interface::PamDesiredIntfDir> &desiredIntfDir,
    const Orv::Ptr<Interface::EthDevPamCollection> &pamCollection,
    const Orv::Ptr<const Interface::DeviceIntfStatusDir> &deviceIntfStatusDir) {
  if (!ethDevPamManager_) {
    ethDevPamManager_ =
        adopted(*this, Orv::make<Interface::EthDevPamManager>(
                           desiredIntfDir, pamCollection, deviceIntfStatusDir));
  }
}

Orv::Ptr<LspPingEthDevPamManager> lspPingEthDevPamManagerFactory(
    const Orv::Name &name, const Wirx::NamespaceName &netNs,
    Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir,
    Orv::Ptr<const Interface::PamDesiredIntfDir> desiredIntfDir,
    Orv::Ptr<Interface::EthDevPamCollection> pamCollection) {
  return Orv::make<LspPingEthDevPamManager>(
      name, netNs, std::move(deviceIntfStatusDir), std::move(desiredIntfDir),
      std::move(pamCollection));
}

LspPingClientRoot::LspPingClientRoot(
    Orv::Ptr<const Interface::AllIntfStatusDir> allIntfStatusDir,
    Orv::Ptr<const Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir,
    Orv::Ptr<const KernelNetInfo::Status> kniStatus,
    Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
    Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
    Orv::Ptr<Wirx::UdpPam> lspPingClientUdpPam,
    Orv::Ptr<Kiv::TimerWheel> timerWheel)
    : allIntfStatusDir_(std::move(allIntfStatusDir)),
      allIntfStatusLocalDir_(std::move(allIntfStatusLocalDir)),
      kniStatus_(std::move(kniStatus)),
      vrfIpIntfStatus_(std::move(vrfIpIntfStatus)),
      vrfIp6IntfStatus_(std::move(vrfIp6IntfStatus)),
      lspPingClientUdpPam_(std::move(lspPingClientUdpPam)),
      timerWheel_(std::move(timerWheel)) {
  deviceIntfStatusDirIs("disd");
  pamDesiredIntfDirIs("pdid");
  ethDevPamCollectionIs("edpc");
  lspPingClientConfigCollIs("lpccc");
  lspPingClientStatusCollIs("lpcsc");
  lspPingClientSmCollIs("lpcsmc");
  lspPingClientRxMsgPipeCollIs("lpcrpc");
  handleInitialized();
}

// The reverse of the start-up: each machine goes before what it relies on,
// and the clients' machines leave through their own tear-down.
LspPingClientRoot::~LspPingClientRoot() {
  initialized_ = false;
  if (lspPingClientListenerSm_) {
    lspPingClientListenerSm_->handleDelete();
    lspPingClientListenerSm_ = nullptr;
  }
  disown(lspPingClientConfigSm_);
  lspPingClientSmManager_ = nullptr;
  disown(lspPingEthDevPamManager_);
  lspPingPamDesiredIntfSm_ = nullptr;
  disown(intfStatusManagerRoot_);
  disown(lspPingClientRxMsgPipeColl_);
  lspPingClientSmColl_->pingClientTxSmDelAll();
  lspPingClientSmColl_->pingClientRxSmDelAll();
  disown(lspPingClientSmColl_);
  disown(lspPingClientStatusColl_);
  disown(lspPingClientConfigColl_);
  disown(ethDevPamCollection_);
  disown(pamDesiredIntfDir_);
  disown(deviceIntfStatusDir_);
}

void LspPingClientRoot::handleInitialized() {
  ORV_TRACE(trace, 8, "void LspPing::LspPingClientRoot::handleInitialized()");
  assign(initialized_, true, initializedAttr);
  const Wirx::NamespaceName netNs = Wirx::NamespaceName::defaultNamespace();
  const L3::VrfName vrfName(clientVrf);
  intfStatusManagerRootIs(allIntfStatusDir_, allIntfStatusLocalDir_, false);
  intfStatusManagerRoot_->intfStatusManagerIs(deviceIntfStatusDir_, kniStatus_,
                                              netNs);
  lspPingPamDesiredIntfSmIs(vrfName, vrfIpIntfStatus_, vrfIp6IntfStatus_,
                            pamDesiredIntfDir_);
  lspPingEthDevPamManagerIs(ethDevPamManagerName, netNs, deviceIntfStatusDir_,
                            pamDesiredIntfDir_, ethDevPamCollection_);
  lspPingClientSmManagerIs(lspPingClientConfigColl_, lspPingClientStatusColl_,
                           lspPingClientSmColl_, lspPingClientRxMsgPipeColl_,
                           timerWheel_);
  lspPingClientConfigSmIs(lspPingClientConfigColl_, lspPingClientStatusColl_,
                          lspPingClientSmColl_, ethDevPamCollection_,
                          timerWheel_);
  lspPingClientListenerSmIs(lspPingClientUdpPam_, lspPingClientRxMsgPipeColl_,
                            timerWheel_, lspPingClientConfigColl_);
}

void LspPingClientRoot::deviceIntfStatusDirIs(const Orv::Name &name) {
  ORV_TRACE(trace, 8, "deviceIntfStatusDirIs ", name);
  deviceIntfStatusDir_ =
      adopted(*this, Orv::make<Interface::DeviceIntfStatusDir>(name));
}

void LspPingClientRoot::pamDesiredIntfDirIs(const Orv::Name &name) {
  ORV_TRACE(trace, 8, "pamDesiredIntfDirIs ", name);
  pamDesiredIntfDir_ =
      adopted(*this, Orv::make<Interface::PamDesiredIntfDir>(name));
}

void LspPingClientRoot::ethDevPamCollectionIs(const Orv::Name &name) {
  ORV_TRACE(trace, 8, "ethDevPamCollectionIs ", name);
  ethDevPamCollection_ =
      adopted(*this, Orv::make<Interface::EthDevPamCollection>(name));
}

void LspPingClientRoot::lspPingClientConfigCollIs(const Orv::Name &name) {
  ORV_TRACE(trace, 8, "lspPingClientConfigCollIs ", name);
  lspPingClientConfigColl_ =
      adopted(*this, lspPingClientConfigCollFactory(name));
}

void LspPingClientRoot::lspPingClientStatusCollIs(const Orv::Name &name) {
  ORV_TRACE(trace, 8, "lspPingClientStatusCollIs ", name);
  lspPingClientStatusColl_ =
      adopted(*this, lspPingClientStatusCollFactory(name));
}

void LspPingClientRoot::lspPingClientSmCollIs(const Orv::Name &name) {
  ORV_TRACE(trace, 8, "lspPingClientSmCollIs ", name);
  lspPingClientSmColl_ = adopted(*this, lspPingClientSmCollFactory(name));
}

void LspPingClientRoot::lspPingClientRxMsgPipeCollIs(const Orv::Name &name) {
  ORV_TRACE(trace, 8, "lspPingClientRxMsgPipeCollIs ", name);
  lspPingClientRxMsgPipeColl_ =
      adopted(*this, lspPingClientRxMsgPipeCollFactory(name));
}

void LspPingClientRoot::intfStatusManagerRootIs(
    const Orv::Ptr<const Interface::AllIntfStatusDir> &allIntfStatusDir,
    const Orv::Ptr<const Interface::AllIntfStatusLocalDir>
        &allIntfStatusLocalDir,
    bool filterByNetNs) {
  ORV_TRACE(trace, 8, "intfStatusManagerRootIs filterByNetNs ", filterByNetNs);
  if (!intfStatusManagerRoot_) {
    intfStatusManagerRoot_ = adopted(
        *this, Orv::make<Interface::NetNsIntfStatusManagerRoot>(
                   allIntfStatusDir, allIntfStatusLocalDir, filterByNetNs));
  }
}

void LspPingClientRoot::lspPingPamDesiredIntfSmIs(
    const L3::VrfName &vrfName,
    const Orv::Ptr<const Ip::VrfIpIntfStatus> &vrfIpIntfStatus,
    const Orv::Ptr<const Ip6::VrfIp6IntfStatus> &vrfIp6IntfStatus,
    const Orv::Ptr<Interface::PamDesiredIntfDir> &pamDesiredIntfDir) {
  ORV_TRACE(trace, 8, "lspPingPamDesiredIntfSmIs ", vrfName);
  if (!lspPingPamDesiredIntfSm_) {
    lspPingPamDesiredIntfSm_ = lspPingPamDesiredIntfSmFactory(
        vrfName, vrfIpIntfStatus, vrfIp6IntfStatus, pamDesiredIntfDir);
  }
}

void LspPingClientRoot::lspPingEthDevPamManagerIs(
    const Orv::Name &name, const Wirx::NamespaceName &netNs,
    const Orv::Ptr<const Interface::DeviceIntfStatusDir> &deviceIntfStatusDir,
    const Orv::Ptr<const Interface::PamDesiredIntfDir> &pamDesiredIntfDir,
    const Orv::Ptr<Interface::EthDevPamCollection> &ethDevPamCollection) {
  ORV_TRACE(trace, 8, "lspPingEthDevPamManagerIs ", name, ' ', netNs);
  if (!lspPingEthDevPamManager_) {
    lspPingEthDevPamManager_ = adopted(
        *this,
        lspPingEthDevPamManagerFactory(name, netNs, deviceIntfStatusDir,
                                       pamDesiredIntfDir, ethDevPamCollection));
  }
}

void LspPingClientRoot::lspPingClientSmManagerIs(
    const Orv::Ptr<const LspPingClientConfigColl> &lspPingClientConfigColl,
    const Orv::Ptr<LspPingClientStatusColl> &lspPingClientStatusColl,
    const Orv::Ptr<LspPingClientSmColl> &lspPingClientSmColl,
    const Orv::Ptr<LspPingClientRxMsgPipeColl> &lspPingClientRxMsgPipeColl,
    const Orv::Ptr<Kiv::TimerWheel> &timerWheel) {
  ORV_TRACE(trace, 8, "lspPingClientSmManagerIs");
  if (!lspPingClientSmManager_) {
    lspPingClientSmManager_ = lspPingClientSmManagerFactory(
        lspPingClientConfigColl, lspPingClientStatusColl, lspPingClientSmColl,
        lspPingClientRxMsgPipeColl, timerWheel);
  }
}

void LspPingClientRoot::lspPingClientConfigSmIs(
    const Orv::Ptr<LspPingClientConfigColl> &lspPingClientConfigColl,
    const Orv::Ptr<LspPingClientStatusColl> &lspPingClientStatusColl,
    const Orv::Ptr<const LspPingClientSmColl> &lspPingClientSmColl,
    const Orv::Ptr<const Interface::EthDevPamCollection> &ethDevPamCollection,
    const Orv::Ptr<Kiv::TimerWheel> &timerWheel) {
  ORV_TRACE(trace, 8, "lspPingClientConfigSmIs");
  if (!lspPingClientConfigSm_) {
    lspPingClientConfigSm_ = adopted(
        *this, lspPingClientConfigSmFactory(
                   lspPingClientConfigColl, lspPingClientStatusColl,
                   lspPingClientSmColl, ethDevPamCollection, timerWheel));
  }
}

void LspPingClientRoot::lspPingClientListenerSmIs(
    const Orv::Ptr<Wirx::UdpPam> &udpPam,
    const Orv::Ptr<LspPingClientRxMsgPipeColl> &lspPingClientRxMsgPipeColl,
    const Orv::Ptr<Kiv::TimerWheel> &timerWheel,
    const Orv::Ptr<const LspPingClientConfigColl> &lspPingClientConfigColl) {
  ORV_TRACE(trace, 8, "lspPingClientListenerSmIs");
  if (!lspPingClientListenerSm_) {
    lspPingClientListenerSm_ =
        lspPingClientListenerSmFactory(udpPam, lspPingClientRxMsgPipeColl,
                                       timerWheel, lspPingClientConfigColl);
  }
}

Orv::Ptr<LspPingClientRoot> lspPingClientRootFactory(
    Orv::Ptr<const Interface::AllIntfStatusDir> allIntfStatusDir,
    Orv::Ptr<const Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir,
    Orv::Ptr<const KernelNetInfo::Status> kniStatus,
    Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
    Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
    Orv::Ptr<Wirx::UdpPam> lspPingClientUdpPam,
    Orv::Ptr<Kiv::TimerWheel> timerWheel) {
  return Orv::make<LspPingClientRoot>(
      std::move(allIntfStatusDir), std::move(allIntfStatusLocalDir),
      std::move(kniStatus), std::move(vrfIpIntfStatus),
      std::move(vrfIp6IntfStatus), std::move(lspPingClientUdpPam),
      std::move(timerWheel));
}

LspPingUtilRoot::~LspPingUtilRoot() { disown(lspPingClientRoot_); }

Orv::Ptr<LspPingClientRoot> LspPingUtilRoot::lspPingClientRootIs(
    Orv::Ptr<const Interface::AllIntfStatusDir> allIntfStatusDir,
    Orv::Ptr<const Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir,
    Orv::Ptr<const KernelNetInfo::Status> kniStatus,
    Orv::Ptr<const Ip::VrfIpIntfStatus> vrfIpIntfStatus,
    Orv::Ptr<const Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus,
    Orv::Ptr<Wirx::UdpPam> lspPingClientUdpPam,
    Orv::Ptr<Kiv::TimerWheel> timerWheel) {
  if (!lspPingClientRoot_) {
    assign(lspPingClientRoot_,
           adopted(*this,
                   lspPingClientRootFactory(
                       std::move(allIntfStatusDir),
                       std::move(allIntfStatusLocalDir), std::move(kniStatus),
                       std::move(vrfIpIntfStatus), std::move(vrfIp6IntfStatus),
                       std::move(lspPingClientUdpPam), std::move(timerWheel))),
           lspPingClientRootAttr);
  }
  return lspPingClientRoot_;
}

void LspPingUtilRoot::lspPingClientRootDel() {
  if (lspPingClientRoot_) {
    lspPingClientRoot_->parentIs(nullptr);
    assign(lspPingClientRoot_, Orv::Ptr<LspPingClientRoot>(),
           lspPingClientRootAttr);
  }
}

Orv::Ptr<LspPingUtilRoot> lspPingUtilRootFactory(const Orv::Name &name) {
  return Orv::make<LspPingUtilRoot>(name);
}

} // namespace LspPing
