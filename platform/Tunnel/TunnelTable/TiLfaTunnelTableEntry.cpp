#include "Tunnel/TunnelTable/TiLfaTunnelTableEntry.h"

#include <ostream>

namespace Tunnel::TunnelTable {

std::ostream &operator<<(std::ostream &os, const TiLfaTunnelTableEntry &entry) {
  return os << Orv::valueText(entry);
}

} // namespace Tunnel::TunnelTable
