#pragma once

#include <string>

#include "Wirx/NamespaceName.h"

namespace KernelNetInfo {

// The kernel device behind an interface ("et1") and the network namespace
// the device lives in. The empty value, with no device, is what an
// interface without a device reads.
struct KernelIntf {
  std::string deviceName;
  Wirx::NamespaceName netNs;

  bool operator==(const KernelIntf &) const = default;
  bool operator!() const { return deviceName.empty(); }
};

} // namespace KernelNetInfo
