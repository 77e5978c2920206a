#include "KernelNetInfo/Status.h"

namespace KernelNetInfo {

void Status::kernelIntfIs(const Wirx::IntfId &intf,
                          const KernelIntf &kernelIntf) {
  // An entry always names a device: one without would read as absent.
  if (!kernelIntf) {
    kernelIntf_.del(intf);
    return;
  }
  kernelIntf_.is(intf, kernelIntf);
}

} // namespace KernelNetInfo
