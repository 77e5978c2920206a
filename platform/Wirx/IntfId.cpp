#include "Wirx/IntfId.h"

#include <algorithm>
#include <ostream>

namespace Wirx {

std::optional<IntfId> IntfId::fromString(std::string_view text) {
  const bool printable = std::all_of(
      text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f'; });
  if (!printable) {
    return std::nullopt;
  }
  return IntfId(std::string(text));
}

std::ostream &operator<<(std::ostream &os, const IntfId &intf) {
  return os << intf.name_;
}

} // namespace Wirx
