#include "Mpls/Hardware/RouteStatus.h"

#include <ostream>

namespace Mpls::Hardware {

std::ostream &operator<<(std::ostream &os, const RouteStatus &status) {
  return os << Orv::valueText(status);
}

} // namespace Mpls::Hardware
