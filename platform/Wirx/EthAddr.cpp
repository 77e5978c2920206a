#include "Wirx/EthAddr.h"

#include <ostream>

namespace Wirx {

namespace {

constexpr char hexDigits[] = "0123456789abcdef";

// The value of a hex digit in either case, or -1.
int hexValue(char c) noexcept {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  if (c >= 'A' && c <= 'F') {
    return c - 'A' + 10;
  }
  return -1;
}

} // namespace

std::string EthAddr::stringValue() const {
  std::string text;
  for (Orv::U8 byte : bytes_) {
    if (!text.empty()) {
      text += ':';
    }
    text += hexDigits[byte >> 4];
    text += hexDigits[byte & 0xF];
  }
  return text;
}

std::optional<EthAddr> EthAddr::fromString(std::string_view text) noexcept {
  EthAddr addr;
  // Two digits per byte and a colon between bytes: "xx:xx:xx:xx:xx:xx".
  if (text.size() != addr.bytes_.size() * 3 - 1) {
    return std::nullopt;
  }
  for (std::size_t i = 0; i < addr.bytes_.size(); ++i) {
    const int high = hexValue(text[i * 3]);
    const int low = hexValue(text[i * 3 + 1]);
    const bool separated =
        i + 1 == addr.bytes_.size() || text[i * 3 + 2] == ':';
    if (high < 0 || low < 0 || !separated) {
      return std::nullopt;
    }
    addr.bytes_[i] = static_cast<Orv::U8>(high << 4 | low);
  }
  return addr;
}

std::ostream &operator<<(std::ostream &os, const EthAddr &addr) {
  return os << addr.stringValue();
}

} // namespace Wirx
