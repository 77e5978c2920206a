#include "Interface/AllIntfStatusLocalDir.h"

namespace Interface {

Orv::Ptr<IntfStatus>
AllIntfStatusLocalDir::intfStatusIs(const Wirx::IntfId &intf) {
  Orv::Ptr<IntfStatus> status = intfStatus_[intf];
  if (!status) {
    status = Orv::make<IntfStatus>(intf);
    intfStatus_.is(intf, status);
  }
  return status;
}

} // namespace Interface
