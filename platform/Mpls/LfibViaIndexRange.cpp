#include "Mpls/LfibViaIndexRange.h"

#include <ostream>

#include "Wirx/TextCursor.h"

namespace Mpls {

std::string LfibViaIndexRange::stringValue() const {
  return std::to_string(value_);
}

std::optional<LfibViaIndexRange>
LfibViaIndexRange::fromString(std::string_view text) noexcept {
  Wirx::TextCursor cursor(text);
  const std::optional<Orv::U32> value = cursor.decimal(max);
  if (!value || !cursor.atEnd()) {
    return std::nullopt;
  }
  return LfibViaIndexRange(*value);
}

std::ostream &operator<<(std::ostream &os, const LfibViaIndexRange &index) {
  return os << index.stringValue();
}

} // namespace Mpls
