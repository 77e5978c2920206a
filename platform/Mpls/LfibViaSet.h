#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Orv/Enum.h"
#include "Orv/Export.h"
#include "Orv/SparseArray.h"
#include "Orv/Types.h"
#include "Orv/ValueText.h"

namespace Mpls {

// What the vias of a via set refer to: entries of the label forwarding
// table's via table, or entries of its extended-FEC via table, which in turn
// resolve through the IP forwarding tables.
enum class LfibViaType : Orv::U8 {
  viaTypeNone = 0,
  viaTypeMpls = 1,
  viaTypeExtFec = 10,
};

inline constexpr Orv::EnumEntry lfibViaTypeNames[] = {
    {"viaTypeNone", 0},
    {"viaTypeMpls", 1},
    {"viaTypeExtFec", 10},
};

using Orv::operator<<;

} // namespace Mpls

template <> struct Orv::EnumTraits<Mpls::LfibViaType> {
  static constexpr EnumType type{"Mpls::LfibViaType", Mpls::lfibViaTypeNames};
};

namespace Mpls {

// Names one via in the via table its via set's type designates.
struct LfibViaKey {
  Orv::U32 id = 0;

  bool operator==(const LfibViaKey &) const = default;

  static constexpr std::string_view valueTypeName = "Mpls::LfibViaKey";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"id", &LfibViaKey::id}};
};

// Names one via set in the via-set table; routes refer to their vias by it.
struct LfibViaSetKey {
  Orv::U32 id = 0;

  bool operator==(const LfibViaSetKey &) const = default;

  static constexpr std::string_view valueTypeName = "Mpls::LfibViaSetKey";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"id", &LfibViaSetKey::id}};
};

// The vias a labelled packet may leave by, in order. The default is the
// empty set, which is also what a lookup of an unknown key reads. Indices
// are stored as bytes, but a set holds at most 128 vias: readers take the
// indices through LfibViaIndexRange, which refuses the rest.
struct LfibViaSet {
  using ViaArray = Orv::SparseArray<Orv::U8, LfibViaKey>;

  LfibViaType viaType = LfibViaType::viaTypeNone;
  ViaArray via;

  void viaIs(Orv::U8 index, const LfibViaKey &key) { via.is(index, key); }
  void viaDel(Orv::U8 index) { via.del(index); }
  void viaDelAll() { via.delAll(); }

  bool operator==(const LfibViaSet &) const = default;
  bool operator!() const { return *this == LfibViaSet(); }

  static constexpr std::string_view valueTypeName = "Mpls::LfibViaSet";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"viaType", &LfibViaSet::viaType},
                 Orv::Field{"via", &LfibViaSet::via}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LfibViaKey &key);
LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LfibViaSetKey &key);
LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LfibViaSet &viaSet);

} // namespace Mpls

template <> struct std::hash<Mpls::LfibViaKey> {
  std::size_t operator()(const Mpls::LfibViaKey &key) const noexcept {
    return std::hash<Orv::U32>()(key.id);
  }
};

template <> struct std::hash<Mpls::LfibViaSetKey> {
  std::size_t operator()(const Mpls::LfibViaSetKey &key) const noexcept {
    return std::hash<Orv::U32>()(key.id);
  }
};
