#include "Interface/EthDevPamManager.h"

#include <utility>
#include <vector>

#include "Wirx/MemPam.h"

namespace Interface {

namespace {

Orv::Ptr<Wirx::Pam> memPamOpener(const EthDevPamParams &params) {
  return Orv::make<Wirx::MemPam>(Orv::Name(params.deviceName.empty()
                                               ? params.netNs.stringValue()
                                               : params.deviceName));
}

} // namespace

EthDevPamManager::EthDevPamManager(
    Orv::Ptr<const PamDesiredIntfDir> desiredIntfDir,
    Orv::Ptr<EthDevPamCollection> pamCollection,
    Orv::Ptr<const DeviceIntfStatusDir> deviceIntfStatusDir)
    : desiredIntfDir_(std::move(desiredIntfDir)),
      pamCollection_(std::move(pamCollection)),
      deviceIntfStatusDir_(std::move(deviceIntfStatusDir)),
      pamOpener_(memPamOpener) {
  const auto onIntf = [this](const Wirx::IntfId &intf) { handleIntf(intf); };
  watch(*desiredIntfDir_, PamDesiredIntfDir::intfDesiredAttr, onIntf);
  watch(*deviceIntfStatusDir_, DeviceIntfStatusDir::entryAttr, onIntf);
}

EthDevPamManager::~EthDevPamManager() {
  openDevice_.clear();
  sharedPam_ = nullptr;
  pamCollection_->intfPamDelAll();
}

void EthDevPamManager::ethProtocolIs(Orv::U16 ethProtocol) {
  if (assign(ethProtocol_, ethProtocol, ethProtocolAttr)) {
    reopenAll();
  }
}

void EthDevPamManager::netNsIs(const Wirx::NamespaceName &netNs) {
  if (assign(netNs_, netNs, netNsAttr)) {
    reopenAll();
  }
}

void EthDevPamManager::broadcastIs(bool broadcast) {
  if (assign(broadcast_, broadcast, broadcastAttr)) {
    reopenAll();
  }
}

void EthDevPamManager::maxRxPktDataIs(Orv::U32 maxRxPktData) {
  if (assign(maxRxPktData_, maxRxPktData, maxRxPktDataAttr)) {
    reopenAll();
  }
}

void EthDevPamManager::perIntfSocketIs(bool perIntfSocket) {
  if (assign(perIntfSocket_, perIntfSocket, perIntfSocketAttr)) {
    reopenAll();
  }
}

void EthDevPamManager::enabledIs(bool enabled) {
  if (assign(enabled_, enabled, enabledAttr)) {
    handleAllIntfs();
  }
}

void EthDevPamManager::pamOpenerIs(PamOpener opener) {
  pamOpener_ = std::move(opener);
  reopenAll();
}

void EthDevPamManager::handleIntf(const Wirx::IntfId &intf) {
  // A copy: the entry may change while readers of the collection react.
  const std::string deviceName = deviceIntfStatusDir_->entry(intf).deviceName;
  if (!enabled_ || !desiredIntfDir_->intfDesired(intf) || deviceName.empty()) {
    close(intf);
    return;
  }
  const auto opened = openDevice_.find(intf);
  if (opened != openDevice_.end() && opened->second == deviceName) {
    return;
  }
  const Orv::Ptr<Wirx::Pam> pam = open(intf, deviceName);
  if (!pam) {
    close(intf);
    return;
  }
  openDevice_[intf] = deviceName;
  pamCollection_->intfPamIs(intf, pam);
}

void EthDevPamManager::handleAllIntfs() {
  std::vector<Wirx::IntfId> intfs;
  for (const auto &[intf, desired] : desiredIntfDir_->intfDesired()) {
    intfs.push_back(intf);
  }
  for (const auto &[intf, pam] : pamCollection_->intfPam()) {
    intfs.push_back(intf);
  }
  for (const Wirx::IntfId &intf : intfs) {
    handleIntf(intf);
  }
}

void EthDevPamManager::reopenAll() {
  openDevice_.clear();
  sharedPam_ = nullptr;
  handleAllIntfs();
}

Orv::Ptr<Wirx::Pam> EthDevPamManager::open(const Wirx::IntfId &intf,
                                           const std::string &deviceName) {
  EthDevPamParams params{intf,         deviceName, netNs_,
                         ethProtocol_, broadcast_, maxRxPktData_};
  if (perIntfSocket_) {
    return pamOpener_(params);
  }
  if (!sharedPam_) {
    params.intfId = Wirx::IntfId();
    params.deviceName.clear();
    sharedPam_ = pamOpener_(params);
  }
  return sharedPam_;
}

void EthDevPamManager::close(const Wirx::IntfId &intf) {
  openDevice_.erase(intf);
  if (openDevice_.empty()) {
    sharedPam_ = nullptr;
  }
  pamCollection_->intfPamDel(intf);
}

} // namespace Interface
