#include "Mesk/FibVia.h"

#include <ostream>

namespace Mesk {

std::ostream &operator<<(std::ostream &os, const FibVia &via) {
  return os << Orv::valueText(via);
}

} // namespace Mesk
