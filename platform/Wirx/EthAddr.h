#pragma once

#include "Orv/Export.h"
#include "Orv/Types.h"

#include <array>
#include <compare>
#include <cstring>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// An Ethernet (MAC) address. All zeros is the unset value.
class LSPPING_EXPORT EthAddr {
public:
  using Bytes = std::array<Orv::U8, 6>;

  constexpr EthAddr() noexcept = default;
  constexpr explicit EthAddr(const Bytes &bytes) noexcept : bytes_(bytes) {}

  static EthAddr fromNbo(const Orv::U8 *bytes) noexcept {
    EthAddr addr;
    std::memcpy(addr.bytes_.data(), bytes, addr.bytes_.size());
    return addr;
  }
  void toNbo(Orv::U8 *bytes) const noexcept {
    std::memcpy(bytes, bytes_.data(), bytes_.size());
  }

  constexpr const Bytes &bytes() const noexcept { return bytes_; }
  constexpr bool operator!() const noexcept { return bytes_ == Bytes{}; }
  constexpr auto operator<=>(const EthAddr &) const noexcept = default;

  // Lower-case colon form, "02:00:00:00:00:01".
  std::string stringValue() const;
  // The colon form in either case.
  static std::optional<EthAddr> fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const EthAddr &addr);

private:
  Bytes bytes_{};
};

} // namespace Wirx
