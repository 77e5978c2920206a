#include "Wirx/MplsLabelStack.h"

#include "Orv/RangeError.h"
#include "Wirx/TextCursor.h"

#include <ostream>

namespace Wirx {

void MplsLabelStack::push(MplsLabel label) {
  if (full()) {
    throw Orv::RangeError("MplsLabelStack::size > MplsLabelStack::capacity "
                          "not allowed");
  }
  labels_[size_++] = label;
}

std::string MplsLabelStack::stringValue() const {
  std::string text = "[";
  for (const MplsLabel &label : *this) {
    if (text.size() > 1) {
      text += ", ";
    }
    text += label.stringValue();
  }
  return text + ']';
}

std::optional<MplsLabelStack>
MplsLabelStack::fromString(std::string_view text) noexcept {
  TextCursor cursor(text);
  MplsLabelStack stack;
  if (!cursor.skip("[")) {
    return std::nullopt;
  }
  if (cursor.skip("]")) {
    return cursor.atEnd() ? std::optional(stack) : std::nullopt;
  }
  do {
    const std::optional<MplsLabel> label =
        MplsLabel::fromString(cursor.upTo(",]"));
    if (!label || stack.full()) {
      return std::nullopt;
    }
    stack.push(*label);
  } while (cursor.skip(", "));
  if (!cursor.skip("]") || !cursor.atEnd()) {
    return std::nullopt;
  }
  return stack;
}

std::ostream &operator<<(std::ostream &os, const MplsLabelStack &stack) {
  return os << stack.stringValue();
}

} // namespace Wirx
