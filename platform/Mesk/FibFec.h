#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Mesk/FibVia.h"
#include "Orv/Export.h"
#include "Orv/SparseArray.h"
#include "Orv/Types.h"
#include "Orv/ValueText.h"

namespace Mesk {

// The IP forwarding entry of one FEC: its vias by index. Indices are 16
// bits wide as stored; readers take them through ViaIndex, which allows
// 0..511. The default, which a lookup of an unknown FEC reads, has no via.
struct FibFec {
  using ViaArray = Orv::SparseArray<Orv::U16, FibVia>;

  ViaArray via;

  void viaIs(Orv::U16 index, const FibVia &value) { via.is(index, value); }
  void viaDel(Orv::U16 index) { via.del(index); }

  bool operator==(const FibFec &) const = default;
  bool operator!() const { return *this == FibFec(); }

  static constexpr std::string_view valueTypeName = "Mesk::FibFec";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"via", &FibFec::via}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os, const FibFec &fec);

} // namespace Mesk
