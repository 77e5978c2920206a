#include "Wirx/IpGenPrefix.h"

#include "Orv/RangeError.h"
#include "Wirx/TextCursor.h"

#include <ostream>

namespace Wirx {

IpGenPrefix::IpGenPrefix(const IpGenAddr &addr, Orv::U8 length)
    : addr_(addr), length_(length) {
  if (length > maxLength(addr.af())) {
    throw Orv::RangeError("IpGenPrefix::length > the address family's bits "
                          "not allowed");
  }
}

IpGenPrefix IpGenPrefix::masked() const noexcept {
  IpGenPrefix prefix = *this;
  if (addr_.isIpv4()) {
    // Shifting a 32-bit value by 32 is undefined, hence the 64-bit mask.
    const Orv::U32 mask = static_cast<Orv::U32>(~0ULL << (32 - length_));
    prefix.addr_ = IpAddr(addr_.v4().value() & mask);
  } else if (addr_.isIpv6()) {
    Ip6Addr::Bytes bytes = addr_.v6().bytes();
    for (Orv::U32 i = 0; i < bytes.size(); ++i) {
      const int keep = static_cast<int>(length_) - static_cast<int>(i * 8);
      if (keep <= 0) {
        bytes[i] = 0;
      } else if (keep < 8) {
        bytes[i] &= static_cast<Orv::U8>(0xFF00 >> keep);
      }
    }
    prefix.addr_ = Ip6Addr(bytes);
  }
  return prefix;
}

std::string IpGenPrefix::stringValue() const {
  if (!addr_) {
    return addr_.stringValue();
  }
  return addr_.stringValue() + '/' + std::to_string(length_);
}

std::optional<IpGenPrefix>
IpGenPrefix::fromString(std::string_view text) noexcept {
  if (text == IpGenAddr::unspecifiedText) {
    return IpGenPrefix();
  }
  TextCursor cursor(text);
  const std::optional<IpGenAddr> addr = IpGenAddr::fromString(cursor.upTo("/"));
  if (!addr || !*addr || !cursor.skip("/")) {
    return std::nullopt;
  }
  const std::optional<Orv::U32> length = cursor.decimal(maxLength(addr->af()));
  if (!length || !cursor.atEnd()) {
    return std::nullopt;
  }
  return IpGenPrefix(*addr, static_cast<Orv::U8>(*length));
}

std::ostream &operator<<(std::ostream &os, const IpGenPrefix &prefix) {
  return os << prefix.stringValue();
}

} // namespace Wirx
