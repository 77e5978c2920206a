#pragma once

#include <compare>
#include <iosfwd>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingDownstreamSignalingProtocol.h"
#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Orv/ValueText.h"
#include "Wirx/MplsLabel.h"

namespace LspPing {

// One label of a downstream mapping's label stack, as its four bytes stand
// in the TLV. Read in network order they form one word:
// label:20 | tc:3 | bos:1 | protocol:8.
struct LSPPING_EXPORT LspPingDownstreamLabelEntry {
  static constexpr U32 bosMask = 0x100;
  static constexpr U8 maxTc = 7;

  U8 v0 = 0;
  U8 v1 = 0;
  U8 v2 = 0;
  U8 v3 = 0;

  constexpr LspPingDownstreamLabelEntry() = default;
  constexpr LspPingDownstreamLabelEntry(U8 v0, U8 v1, U8 v2, U8 v3)
      : v0(v0), v1(v1), v2(v2), v3(v3) {}
  static constexpr LspPingDownstreamLabelEntry fromWord(U32 word) {
    return {static_cast<U8>(word >> 24), static_cast<U8>(word >> 16),
            static_cast<U8>(word >> 8), static_cast<U8>(word)};
  }
  // The label must fit 20 bits and tc 3 bits.
  static LspPingDownstreamLabelEntry
  fromLabel(Wirx::MplsLabel label, U8 tc, bool bos,
            LspPingDownstreamSignalingProtocol protocol);

  constexpr U32 word() const {
    return U32{v0} << 24 | U32{v1} << 16 | U32{v2} << 8 | U32{v3};
  }

  Wirx::MplsLabel label() const { return Wirx::MplsLabel(word() >> 12); }
  // Sets the label bits only; must fit 20 bits.
  void labelIs(Wirx::MplsLabel label);
  U8 tc() const { return static_cast<U8>((word() >> 9) & maxTc); }
  void tcIs(U8 tc);
  bool bos() const { return (word() & bosMask) != 0; }
  void bosIs(bool bos);
  LspPingDownstreamSignalingProtocol protocol() const {
    return LspPingDownstreamSignalingProtocol{v3};
  }
  void protocolIs(LspPingDownstreamSignalingProtocol protocol);

  constexpr bool
  operator==(const LspPingDownstreamLabelEntry &) const = default;
  // Ordered by the word.
  constexpr std::strong_ordering
  operator<=>(const LspPingDownstreamLabelEntry &other) const {
    return word() <=> other.word();
  }
  constexpr bool operator!() const {
    return *this == LspPingDownstreamLabelEntry();
  }

  static constexpr std::string_view valueTypeName =
      "LspPing::LspPingDownstreamLabelEntry";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"v0", &LspPingDownstreamLabelEntry::v0},
                 Orv::Field{"v1", &LspPingDownstreamLabelEntry::v1},
                 Orv::Field{"v2", &LspPingDownstreamLabelEntry::v2},
                 Orv::Field{"v3", &LspPingDownstreamLabelEntry::v3}};
};

LSPPING_EXPORT std::ostream &
operator<<(std::ostream &os, const LspPingDownstreamLabelEntry &entry);

LSPPING_EXPORT LspPingDownstreamLabelEntry
lspPingDownstreamLabelEntryFactory(U8 v0 = 0, U8 v1 = 0, U8 v2 = 0, U8 v3 = 0);

} // namespace LspPing
