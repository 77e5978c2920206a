#include "Tunnel/TunnelTable/TiLfaTunnelTable.h"

#include <algorithm>
#include <string>

#include "Orv/Assert.h"

namespace Tunnel::TunnelTable {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

} // namespace

TiLfaTunnelTable::TiLfaTunnelTable(const Orv::Name &name)
    : NamedEntity(name), tunnelTable_(name.stringValue() + "/tunnel") {}

bool TiLfaTunnelTable::isTiLfaTunnelIntf(const Wirx::IntfId &intf) {
  const std::string_view name = intf.name();
  if (!name.starts_with(intfNamePrefix) ||
      name.size() == intfNamePrefix.size()) {
    return false;
  }
  const std::string_view digits = name.substr(intfNamePrefix.size());
  return std::all_of(digits.begin(), digits.end(), isDigit);
}

TunnelId TiLfaTunnelTable::tunnelId(const Wirx::IntfId &intf) {
  ORV_ASSERT(isTiLfaTunnelIntf(intf));
  // Accumulated saturating just above the largest id, so that any longer
  // number, however many digits, is refused by TunnelId's range check
  // rather than wrapping round into range.
  constexpr Orv::U64 cap = Orv::U64{TunnelId::maxValue} + 1;
  Orv::U64 value = 0;
  for (char c : std::string_view(intf.name()).substr(intfNamePrefix.size())) {
    value = std::min(cap, value * 10 + static_cast<Orv::U64>(c - '0'));
  }
  return TunnelId(value);
}

Wirx::IntfId TiLfaTunnelTable::tunnelIntf(TunnelId id) {
  return Wirx::IntfId(std::string(intfNamePrefix) + id.stringValue());
}

} // namespace Tunnel::TunnelTable
