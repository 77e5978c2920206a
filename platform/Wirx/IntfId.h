#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Orv/Export.h"

namespace Wirx {

// Names an interface by the name the system gives it, "Ethernet1". The
// empty name is the unset value.
class LSPPING_EXPORT IntfId {
public:
  IntfId() = default;
  explicit IntfId(std::string name) noexcept : name_(std::move(name)) {}

  const std::string &name() const noexcept { return name_; }
  bool operator!() const noexcept { return name_.empty(); }
  auto operator<=>(const IntfId &) const = default;

  std::string stringValue() const { return name_; }
  // Any name of printable characters without blanks (the empty text is the
  // unset id); blanks and control characters would garble traces and
  // command lines.
  static std::optional<IntfId> fromString(std::string_view text);
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const IntfId &intf);

private:
  std::string name_;
};

} // namespace Wirx

template <> struct std::hash<Wirx::IntfId> {
  std::size_t operator()(const Wirx::IntfId &intf) const noexcept {
    return std::hash<std::string>()(intf.name());
  }
};
