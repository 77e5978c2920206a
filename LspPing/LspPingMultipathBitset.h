#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Orv/SparseArray.h"
#include "Orv/ValueText.h"

namespace LspPing {

// The multipath information of a downstream mapping: its bytes in wire
// order and its length. A byte not stored reads as 0.
struct LspPingMultipathBitset {
  using BitsetArray = Orv::SparseArray<U32, U8>;

  BitsetArray bitset;
  U32 size = 0;

  LspPingMultipathBitset() = default;
  explicit LspPingMultipathBitset(U32 size) : size(size) {}

  void bitsetIs(U32 index, U8 byte) { bitset.is(index, byte); }
  void bitsetDel(U32 index) { bitset.del(index); }
  BitsetArray::const_iterator bitsetDel(BitsetArray::const_iterator at) {
    return bitset.del(at);
  }
  void bitsetDelAll() { bitset.delAll(); }

  bool operator==(const LspPingMultipathBitset &) const = default;
  bool operator!() const { return *this == LspPingMultipathBitset(); }

  static constexpr std::string_view valueTypeName =
      "LspPing::LspPingMultipathBitset";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"bitset", &LspPingMultipathBitset::bitset},
                 Orv::Field{"size", &LspPingMultipathBitset::size}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LspPingMultipathBitset &bitset);

LSPPING_EXPORT LspPingMultipathBitset
lspPingMultipathBitsetFactory(U32 size = 0);

} // namespace LspPing
