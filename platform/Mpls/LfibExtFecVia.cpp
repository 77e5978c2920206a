#include "Mpls/LfibExtFecVia.h"

#include <ostream>

namespace Mpls {

std::ostream &operator<<(std::ostream &os, const LfibExtFecVia &via) {
  return os << Orv::valueText(via);
}

} // namespace Mpls
