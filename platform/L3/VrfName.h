#pragma once

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Orv/Export.h"

namespace L3 {

// Names a VRF, "default" or one an operator configured. Names travel in
// fixed-size fields between the routing agents, hence the bound: a longer
// name is refused with Orv::RangeError.
class LSPPING_EXPORT VrfName {
public:
  static constexpr std::size_t maxLength = 100;

  VrfName() = default;
  explicit VrfName(std::string_view name);

  const std::string &stringValue() const noexcept { return name_; }
  std::size_t bytes() const noexcept { return name_.size(); }
  bool operator!() const noexcept { return name_.empty(); }
  auto operator<=>(const VrfName &) const = default;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const VrfName &vrf);

private:
  std::string name_;
};

} // namespace L3
