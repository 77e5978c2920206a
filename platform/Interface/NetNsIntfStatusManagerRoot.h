#pragma once

#include "Interface/NetNsIntfStatusManager.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"

namespace Interface {

// Fills the device interface directories of network namespaces from the
// system's interface status: one NetNsIntfStatusManager per namespace.
// Without filtering by namespace, a namespace's directory takes every
// interface that has a kernel device, wherever the device is: what an agent
// that sees all devices from its own namespace wants.
class LSPPING_EXPORT NetNsIntfStatusManagerRoot : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<Wirx::NamespaceName> intfStatusManagerAttr{1};

  NetNsIntfStatusManagerRoot(
      Orv::Ptr<const AllIntfStatusDir> allIntfStatusDir,
      Orv::Ptr<const AllIntfStatusLocalDir> allIntfStatusLocalDir,
      bool filterByNetNs)
      : allIntfStatusDir_(std::move(allIntfStatusDir)),
        allIntfStatusLocalDir_(std::move(allIntfStatusLocalDir)),
        filterByNetNs_(filterByNetNs) {}

  const Orv::Ptr<const AllIntfStatusDir> &allIntfStatusDir() const {
    return allIntfStatusDir_;
  }
  const Orv::Ptr<const AllIntfStatusLocalDir> &allIntfStatusLocalDir() const {
    return allIntfStatusLocalDir_;
  }
  bool filterByNetNs() const { return filterByNetNs_; }

  const Orv::Coll<Wirx::NamespaceName, Orv::Ptr<NetNsIntfStatusManager>> &
  intfStatusManager() const {
    return intfStatusManager_;
  }
  Orv::Ptr<NetNsIntfStatusManager>
  intfStatusManager(const Wirx::NamespaceName &netNs) const {
    return intfStatusManager_[netNs];
  }
  // The namespace's manager, created, and so filling `deviceIntfStatusDir`
  // at once, when the namespace has none.
  Orv::Ptr<NetNsIntfStatusManager>
  intfStatusManagerIs(const Orv::Ptr<DeviceIntfStatusDir> &deviceIntfStatusDir,
                      const Orv::Ptr<const KernelNetInfo::Status> &kniStatus,
                      const Wirx::NamespaceName &netNs);
  void intfStatusManagerDel(const Wirx::NamespaceName &netNs) {
    intfStatusManager_.del(netNs);
  }

private:
  const Orv::Ptr<const AllIntfStatusDir> allIntfStatusDir_;
  const Orv::Ptr<const AllIntfStatusLocalDir> allIntfStatusLocalDir_;
  const bool filterByNetNs_;
  Orv::Coll<Wirx::NamespaceName, Orv::Ptr<NetNsIntfStatusManager>>
      intfStatusManager_{*this, intfStatusManagerAttr};
};

} // namespace Interface
