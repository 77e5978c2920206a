#include "Wirx/MplsLabel.h"

#include "Wirx/TextCursor.h"

#include <ostream>

namespace Wirx {

std::string MplsLabel::stringValue() const {
  if (value_ == null) {
    return std::string(nullText);
  }
  return std::to_string(value_);
}

std::optional<MplsLabel> MplsLabel::fromString(std::string_view text) noexcept {
  if (text == nullText) {
    return MplsLabel();
  }
  TextCursor cursor(text);
  const std::optional<Orv::U32> value = cursor.decimal(luWithdraw);
  if (!value || !cursor.atEnd()) {
    return std::nullopt;
  }
  return MplsLabel(*value);
}

std::ostream &operator<<(std::ostream &os, const MplsLabel &label) {
  return os << label.stringValue();
}

} // namespace Wirx
