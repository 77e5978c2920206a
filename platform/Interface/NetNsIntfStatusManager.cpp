#include "Interface/NetNsIntfStatusManager.h"

#include <vector>

namespace Interface {

NetNsIntfStatusManager::NetNsIntfStatusManager(
    Orv::Ptr<const AllIntfStatusDir> allIntfStatusDir,
    Orv::Ptr<const AllIntfStatusLocalDir> allIntfStatusLocalDir,
    bool filterByNetNs, Orv::Ptr<DeviceIntfStatusDir> deviceIntfStatusDir,
    Orv::Ptr<const KernelNetInfo::Status> kniStatus,
    const Wirx::NamespaceName &netNs)
    : allIntfStatusDir_(std::move(allIntfStatusDir)),
      allIntfStatusLocalDir_(std::move(allIntfStatusLocalDir)),
      filterByNetNs_(filterByNetNs),
      deviceIntfStatusDir_(std::move(deviceIntfStatusDir)),
      kniStatus_(std::move(kniStatus)), netNs_(netNs) {
  const auto onIntf = [this](const Wirx::IntfId &intf) { handleIntf(intf); };
  watch(*allIntfStatusDir_, AllIntfStatusDir::intfStatusAttr, onIntf);
  watch(*allIntfStatusLocalDir_, AllIntfStatusLocalDir::intfStatusAttr, onIntf);
  watch(*kniStatus_, KernelNetInfo::Status::kernelIntfAttr, onIntf);
  // Every interface that may belong in the directory has a device; what the
  // directory holds already may be stale.
  std::vector<Wirx::IntfId> intfs;
  for (const auto &[intf, kernelIntf] : kniStatus_->kernelIntf()) {
    intfs.push_back(intf);
  }
  for (const auto &[intf, entry] : *deviceIntfStatusDir_) {
    intfs.push_back(intf);
  }
  for (const Wirx::IntfId &intf : intfs) {
    handleIntf(intf);
  }
}

void NetNsIntfStatusManager::handleIntf(const Wirx::IntfId &intf) {
  const KernelNetInfo::KernelIntf kernelIntf = kniStatus_->kernelIntf(intf);
  if (!kernelIntf || (filterByNetNs_ && kernelIntf.netNs != netNs_)) {
    deviceIntfStatusDir_->entryDel(intf);
    return;
  }
  Orv::Ptr<const IntfStatus> status = allIntfStatusLocalDir_->intfStatus(intf);
  if (!status) {
    status = allIntfStatusDir_->intfStatus(intf);
  }
  deviceIntfStatusDir_->entryIs(
      intf, DeviceIntfStatusEntry{status, kernelIntf.deviceName});
}

} // namespace Interface
