#include "Mpls/LfibViaSet.h"

#include <ostream>

namespace Mpls {

namespace {

const Orv::EnumRegistration<LfibViaType> viaType;

} // namespace

std::ostream &operator<<(std::ostream &os, const LfibViaKey &key) {
  return os << Orv::valueText(key);
}

std::ostream &operator<<(std::ostream &os, const LfibViaSetKey &key) {
  return os << Orv::valueText(key);
}

std::ostream &operator<<(std::ostream &os, const LfibViaSet &viaSet) {
  return os << Orv::valueText(viaSet);
}

} // namespace Mpls
