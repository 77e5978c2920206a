#include "Wirx/IpAddr.h"

#include "Wirx/TextCursor.h"

#include <ostream>

namespace Wirx {

std::string IpAddr::stringValue() const {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    text += std::to_string((value_ >> shift) & 0xFF);
    if (shift != 0) {
      text += '.';
    }
  }
  return text;
}

std::optional<IpAddr> IpAddr::fromString(std::string_view text) noexcept {
  TextCursor cursor(text);
  Orv::U32 value = 0;
  for (int part = 0; part < 4; ++part) {
    if (part != 0 && !cursor.skip(".")) {
      return std::nullopt;
    }
    // A leading zero would read as octal to some tools: refuse it rather
    // than guess.
    const std::string_view digits = cursor.upTo(".");
    if (digits.size() > 1 && digits.front() == '0') {
      return std::nullopt;
    }
    TextCursor partCursor(digits);
    const std::optional<Orv::U32> byte = partCursor.decimal(255);
    if (!byte || !partCursor.atEnd()) {
      return std::nullopt;
    }
    value = (value << 8) | *byte;
  }
  if (!cursor.atEnd()) {
    return std::nullopt;
  }
  return IpAddr(value);
}

std::ostream &operator<<(std::ostream &os, const IpAddr &addr) {
  return os << addr.stringValue();
}

} // namespace Wirx
