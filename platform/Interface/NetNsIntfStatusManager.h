#pragma once

#include "Interface/AllIntfStatusDir.h"
#include "Interface/AllIntfStatusLocalDir.h"
#include "Interface/DeviceIntfStatusDir.h"
#include "KernelNetInfo/Status.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Reactor.h"
#include "Wirx/NamespaceName.h"

namespace Interface {

// Keeps the device interface directory of one network namespace filled:
// an interface is in it while the kernel reports a device for it (in this
// namespace, when filtering by namespace), with that device's name and the
// interface's status, from the local directory if it is there, else from
// the system's. The status half stays empty until the interface has one.
// Created by NetNsIntfStatusManagerRoot.
class LSPPING_EXPORT NetNsIntfStatusManager : public Orv::Object,
                                              public Orv::Reactor {
public:
  NetNsIntfStatusManager(
      Orv::Ptr<const AllIntfStatusDir> allIntfStatusDir,
      Orv::Ptr<const AllIntfStatusLocalDir> allIntfStatusLocalDir,
      bool filterByNetNs, Orv::Ptr<DeviceIntfStatusDir> deviceIntfStatusDir,
      Orv::Ptr<const KernelNetInfo::Status> kniStatus,
      const Wirx::NamespaceName &netNs);

  const Orv::Ptr<DeviceIntfStatusDir> &deviceIntfStatusDir() const {
    return deviceIntfStatusDir_;
  }
  const Orv::Ptr<const KernelNetInfo::Status> &kniStatus() const {
    return kniStatus_;
  }
  const Wirx::NamespaceName &netNs() const { return netNs_; }
  bool filterByNetNs() const { return filterByNetNs_; }

  // Brings the interface's entry in line with the kernel and the status
  // directories.
  void handleIntf(const Wirx::IntfId &intf);

private:
  const Orv::Ptr<const AllIntfStatusDir> allIntfStatusDir_;
  const Orv::Ptr<const AllIntfStatusLocalDir> allIntfStatusLocalDir_;
  const bool filterByNetNs_;
  const Orv::Ptr<DeviceIntfStatusDir> deviceIntfStatusDir_;
  const Orv::Ptr<const KernelNetInfo::Status> kniStatus_;
  const Wirx::NamespaceName netNs_;
};

} // namespace Interface
