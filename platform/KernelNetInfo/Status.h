#pragma once

#include "KernelNetInfo/KernelIntf.h"
#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Wirx/IntfId.h"

namespace KernelNetInfo {

// What the kernel reports of the system's interfaces: for each interface
// backed by a kernel device, the device and its network namespace. The
// agent that follows the kernel keeps it filled; watchers learn of each
// interface whose device comes, moves or goes.
class LSPPING_EXPORT Status : public Orv::NamedEntity {
public:
  static constexpr Orv::CollAttr<Wirx::IntfId> kernelIntfAttr{1};

  explicit Status(const Orv::Name &name) : NamedEntity(name) {}

  const Orv::Coll<Wirx::IntfId, KernelIntf> &kernelIntf() const {
    return kernelIntf_;
  }
  // The interface's device, or the empty value.
  KernelIntf kernelIntf(const Wirx::IntfId &intf) const {
    return kernelIntf_[intf];
  }
  void kernelIntfIs(const Wirx::IntfId &intf, const KernelIntf &kernelIntf);
  void kernelIntfDel(const Wirx::IntfId &intf) { kernelIntf_.del(intf); }

private:
  Orv::Coll<Wirx::IntfId, KernelIntf> kernelIntf_{*this, kernelIntfAttr};
};

} // namespace KernelNetInfo
