#include "Mpls/CommonLibEntry.h"

#include <ostream>

namespace Mpls {

std::ostream &operator<<(std::ostream &os, const CommonLibEntry &entry) {
  return os << Orv::valueText(entry);
}

} // namespace Mpls
