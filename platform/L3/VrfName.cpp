#include "L3/VrfName.h"

#include <ostream>

#include "Orv/RangeError.h"

namespace L3 {

VrfName::VrfName(std::string_view name) : name_(name) {
  if (bytes() > maxLength) {
    throw Orv::RangeError("VrfName::bytes > VrfName::maxLength not allowed");
  }
}

std::ostream &operator<<(std::ostream &os, const VrfName &vrf) {
  return os << vrf.name_;
}

} // namespace L3
