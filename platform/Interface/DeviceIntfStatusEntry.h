#pragma once

#include <string>

#include "Interface/IntfStatus.h"
#include "Orv/Object.h"

namespace Interface {

// One entry of the device interface directory: the interface's status and
// the name of the kernel device behind it ("et1"). Either half may be
// missing while the interface comes up; the empty entry, which a lookup of
// an unknown interface reads, has neither.
struct DeviceIntfStatusEntry {
  Orv::Ptr<const IntfStatus> intfStatus;
  std::string deviceName;

  // The same status object, not merely equal statuses.
  bool operator==(const DeviceIntfStatusEntry &) const = default;
  bool operator!() const { return !intfStatus && deviceName.empty(); }
};

} // namespace Interface
