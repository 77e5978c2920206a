#include "Mpls/LfibVia.h"

#include <ostream>

namespace Mpls {

std::ostream &operator<<(std::ostream &os, const LfibVia &via) {
  return os << Orv::valueText(via);
}

} // namespace Mpls
