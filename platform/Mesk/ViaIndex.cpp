#include "Mesk/ViaIndex.h"

#include <ostream>

#include "Wirx/TextCursor.h"

namespace Mesk {

std::string ViaIndex::stringValue() const { return std::to_string(value_); }

std::optional<ViaIndex> ViaIndex::fromString(std::string_view text) noexcept {
  Wirx::TextCursor cursor(text);
  const std::optional<Orv::U32> value = cursor.decimal(max);
  if (!value || !cursor.atEnd()) {
    return std::nullopt;
  }
  return ViaIndex(*value);
}

std::ostream &operator<<(std::ostream &os, const ViaIndex &index) {
  return os << index.stringValue();
}

} // namespace Mesk
