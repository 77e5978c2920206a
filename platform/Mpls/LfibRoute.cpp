#include "Mpls/LfibRoute.h"

#include <ostream>

namespace Mpls {

std::ostream &operator<<(std::ostream &os, const RouteKey &key) {
  return os << Orv::valueText(key);
}

std::ostream &operator<<(std::ostream &os, const LfibRoute &route) {
  return os << Orv::valueText(route);
}

} // namespace Mpls
