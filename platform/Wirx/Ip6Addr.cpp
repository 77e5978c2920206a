#include "Wirx/Ip6Addr.h"

#include <arpa/inet.h>

#include <ostream>

namespace Wirx {

std::string Ip6Addr::stringValue() const {
  char text[INET6_ADDRSTRLEN];
  // Cannot fail: the family is right and the buffer has the maximum size.
  inet_ntop(AF_INET6, bytes_.data(), text, sizeof text);
  return text;
}

std::optional<Ip6Addr> Ip6Addr::fromString(std::string_view text) noexcept {
  // inet_pton wants a C string; an embedded NUL would cut the text short
  // and let trailing garbage through.
  char cText[INET6_ADDRSTRLEN];
  if (text.size() >= sizeof cText ||
      text.find('\0') != std::string_view::npos) {
    return std::nullopt;
  }
  text.copy(cText, text.size());
  cText[text.size()] = '\0';
  Ip6Addr addr;
  if (inet_pton(AF_INET6, cText, addr.bytes_.data()) != 1) {
    return std::nullopt;
  }
  return addr;
}

std::ostream &operator<<(std::ostream &os, const Ip6Addr &addr) {
  return os << addr.stringValue();
}

} // namespace Wirx
