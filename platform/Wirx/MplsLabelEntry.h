#pragma once

#include "Orv/Assert.h"
#include "Orv/Export.h"
#include "Orv/RangeError.h"
#include "Orv/Types.h"
#include "Wirx/MplsLabel.h"
#include "Wirx/Nbo.h"

#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// One label stack entry (RFC 3032): label, traffic class, bottom-of-stack
// bit and TTL. On the wire it is one 32-bit word:
// label:20 | tc:3 | bos:1 | ttl:8.
class LSPPING_EXPORT MplsLabelEntry {
public:
  static constexpr Orv::U8 maxTc = 7;

  constexpr MplsLabelEntry() noexcept = default;
  // Throws Orv::RangeError for a tc above maxTc.
  constexpr MplsLabelEntry(MplsLabel label, Orv::U8 tc, bool bos, Orv::U8 ttl)
      : label_(label), tc_(checkedTc(tc)), bos_(bos), ttl_(ttl) {}

  static constexpr MplsLabelEntry fromWord(Orv::U32 word) noexcept {
    return MplsLabelEntry(MplsLabel(word >> 12),
                          static_cast<Orv::U8>((word >> 9) & maxTc),
                          (word & 0x100) != 0, static_cast<Orv::U8>(word));
  }
  // Only entries whose label fits 20 bits have a word: encoding `null` or
  // `luWithdraw` is a fault of the caller.
  Orv::U32 word() const noexcept {
    ORV_ASSERT(label_.isWireLabel());
    return label_.value() << 12 | Orv::U32{tc_} << 9 | Orv::U32{bos_} << 8 |
           ttl_;
  }
  static MplsLabelEntry fromNbo(const Orv::U8 *bytes) noexcept {
    return fromWord(load32(bytes));
  }
  void toNbo(Orv::U8 *bytes) const noexcept { store32(bytes, word()); }

  constexpr MplsLabel label() const noexcept { return label_; }
  constexpr void labelIs(MplsLabel label) noexcept { label_ = label; }
  constexpr Orv::U8 tc() const noexcept { return tc_; }
  constexpr void tcIs(Orv::U8 tc) { tc_ = checkedTc(tc); }
  constexpr bool bos() const noexcept { return bos_; }
  constexpr void bosIs(bool bos) noexcept { bos_ = bos; }
  constexpr Orv::U8 ttl() const noexcept { return ttl_; }
  constexpr void ttlIs(Orv::U8 ttl) noexcept { ttl_ = ttl; }

  constexpr bool operator!() const noexcept {
    return *this == MplsLabelEntry();
  }
  constexpr auto operator<=>(const MplsLabelEntry &) const noexcept = default;

  // "label=100 tc=0 bos=1 ttl=255".
  std::string stringValue() const;
  static std::optional<MplsLabelEntry>
  fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const MplsLabelEntry &entry);

private:
  static constexpr Orv::U8 checkedTc(Orv::U8 tc) {
    if (tc > maxTc) {
      throw Orv::RangeError("MplsLabelEntry::tc > MplsLabelEntry::maxTc not "
                            "allowed");
    }
    return tc;
  }

  MplsLabel label_;
  Orv::U8 tc_ = 0;
  bool bos_ = false;
  Orv::U8 ttl_ = 0;
};

} // namespace Wirx
