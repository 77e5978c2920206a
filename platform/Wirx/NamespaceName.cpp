#include "Wirx/NamespaceName.h"

#include <ostream>

namespace Wirx {

std::ostream &operator<<(std::ostream &os, const NamespaceName &ns) {
  return os << ns.name_;
}

} // namespace Wirx
