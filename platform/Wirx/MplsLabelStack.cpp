#include "Wirx/MplsLabelStack.h"

#include "Orv/RangeError.h"
#include "Wirx/TextCursor.h"

#include <ostream>

namespace Wirx {

namespace {

std::string entryText(const MplsLabelEntry &entry) {
  std::string text = entry.label().stringValue();
  if (entry.tc() != 0) {
    text += "/tc=" + std::to_string(entry.tc());
  }
  if (entry.bos()) {
    text += "/bos";
  }
  if (entry.ttl() != 0) {
    text += "/ttl=" + std::to_string(entry.ttl());
  }
  return text;
}

// Reads what entryText() writes; the fields after the label are optional but
// keep their order.
std::optional<MplsLabelEntry> entryFromText(std::string_view text) noexcept {
  TextCursor cursor(text);
  const std::optional<MplsLabel> label =
      MplsLabel::fromString(cursor.upTo("/"));
  if (!label) {
    return std::nullopt;
  }
  std::optional<Orv::U32> tc = 0;
  std::optional<Orv::U32> ttl = 0;
  if (cursor.skip("/tc=")) {
    tc = cursor.decimal(MplsLabelEntry::maxTc);
  }
  const bool bos = cursor.skip("/bos");
  if (cursor.skip("/ttl=")) {
    ttl = cursor.decimal(255);
  }
  if (!tc || !ttl || !cursor.atEnd()) {
    return std::nullopt;
  }
  return MplsLabelEntry(*label, static_cast<Orv::U8>(*tc), bos,
                        static_cast<Orv::U8>(*ttl));
}

} // namespace

void MplsLabelStack::push(const MplsLabelEntry &entry) {
  if (full()) {
    throw Orv::RangeError("MplsLabelStack::size > MplsLabelStack::capacity "
                          "not allowed");
  }
  entries_[size_++] = entry;
}

std::string MplsLabelStack::stringValue() const {
  std::string text = "[";
  for (const MplsLabelEntry &entry : *this) {
    if (text.size() > 1) {
      text += ", ";
    }
    text += entryText(entry);
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
    const std::optional<MplsLabelEntry> entry =
        entryFromText(cursor.upTo(",]"));
    if (!entry || stack.full()) {
      return std::nullopt;
    }
    stack.push(*entry);
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
