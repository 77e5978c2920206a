#include "Interface/NetNsIntfStatusManagerRoot.h"

namespace Interface {

Orv::Ptr<NetNsIntfStatusManager>
NetNsIntfStatusManagerRoot::intfStatusManagerIs(
    const Orv::Ptr<DeviceIntfStatusDir> &deviceIntfStatusDir,
    const Orv::Ptr<const KernelNetInfo::Status> &kniStatus,
    const Wirx::NamespaceName &netNs) {
  Orv::Ptr<NetNsIntfStatusManager> manager = intfStatusManager_[netNs];
  if (!manager) {
    manager = Orv::make<NetNsIntfStatusManager>(
        allIntfStatusDir_, allIntfStatusLocalDir_, filterByNetNs_,
        deviceIntfStatusDir, kniStatus, netNs);
    intfStatusManager_.is(netNs, manager);
  }
  return manager;
}

} // namespace Interface
