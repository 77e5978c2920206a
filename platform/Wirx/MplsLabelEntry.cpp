#include "Wirx/MplsLabelEntry.h"

#include "Wirx/TextCursor.h"

#include <ostream>

namespace Wirx {

std::string MplsLabelEntry::stringValue() const {
  return "label=" + label_.stringValue() + " tc=" + std::to_string(tc_) +
         " bos=" + std::to_string(bos_ ? 1 : 0) +
         " ttl=" + std::to_string(ttl_);
}

std::optional<MplsLabelEntry>
MplsLabelEntry::fromString(std::string_view text) noexcept {
  TextCursor cursor(text);
  if (!cursor.skip("label=")) {
    return std::nullopt;
  }
  const std::optional<MplsLabel> label =
      MplsLabel::fromString(cursor.upTo(" "));
  if (!label || !cursor.skip(" tc=")) {
    return std::nullopt;
  }
  const std::optional<Orv::U32> tc = cursor.decimal(maxTc);
  if (!tc || !cursor.skip(" bos=")) {
    return std::nullopt;
  }
  const std::optional<Orv::U32> bos = cursor.decimal(1);
  if (!bos || !cursor.skip(" ttl=")) {
    return std::nullopt;
  }
  const std::optional<Orv::U32> ttl = cursor.decimal(255);
  if (!ttl || !cursor.atEnd()) {
    return std::nullopt;
  }
  return MplsLabelEntry(*label, static_cast<Orv::U8>(*tc), *bos == 1,
                        static_cast<Orv::U8>(*ttl));
}

std::ostream &operator<<(std::ostream &os, const MplsLabelEntry &entry) {
  return os << entry.stringValue();
}

} // namespace Wirx
