#include "Interface/AllIntfStatusDir.h"

namespace Interface {

Orv::Ptr<IntfStatus> AllIntfStatusDir::intfStatusIs(const Wirx::IntfId &intf) {
  Orv::Ptr<IntfStatus> status = intfStatus_[intf];
  if (!status) {
    status = Orv::make<IntfStatus>(intf);
    intfStatus_.is(intf, status);
  }
  return status;
}

} // namespace Interface
