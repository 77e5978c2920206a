#include "Tunnel/TunnelId.h"

#include <ostream>

#include "Wirx/TextCursor.h"

namespace Tunnel {

std::string TunnelId::stringValue() const { return std::to_string(value_); }

std::optional<TunnelId> TunnelId::fromString(std::string_view text) noexcept {
  Wirx::TextCursor cursor(text);
  const std::optional<Orv::U32> value = cursor.decimal(maxValue);
  if (!value || !cursor.atEnd()) {
    return std::nullopt;
  }
  return TunnelId(*value);
}

std::ostream &operator<<(std::ostream &os, const TunnelId &id) {
  return os << id.stringValue();
}

} // namespace Tunnel
