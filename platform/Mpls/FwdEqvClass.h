#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Orv/Export.h"
#include "Orv/ValueText.h"
#include "Wirx/IpGenPrefix.h"

namespace Mpls {

// A forwarding equivalence class: the prefix whose packets a label binding
// or a forwarding entry covers, "10.1.1.1/32" or "2001:db8::9/128". The
// prefix is kept as given, host bits and all, and two classes are the same
// only when address and length both are. The default names nothing.
struct LSPPING_EXPORT FwdEqvClass {
  Wirx::IpGenPrefix prefix;

  bool operator!() const noexcept { return !prefix; }
  auto operator<=>(const FwdEqvClass &) const noexcept = default;
  std::size_t hash() const noexcept;

  static constexpr std::string_view valueTypeName = "Mpls::FwdEqvClass";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"prefix", &FwdEqvClass::prefix}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const FwdEqvClass &fec);

} // namespace Mpls

template <> struct std::hash<Mpls::FwdEqvClass> {
  std::size_t operator()(const Mpls::FwdEqvClass &fec) const noexcept {
    return fec.hash();
  }
};
