#include "Mesk/FibFec.h"

#include <ostream>

namespace Mesk {

std::ostream &operator<<(std::ostream &os, const FibFec &fec) {
  return os << Orv::valueText(fec);
}

} // namespace Mesk
