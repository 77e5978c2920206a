#pragma once

#include "Orv/Types.h"

#include <bit>
#include <cstring>

namespace Wirx {

// Converts between host and network (big-endian) order; the same swap goes
// both ways.
constexpr Orv::U16 netOrder16(Orv::U16 v) noexcept {
  if constexpr (std::endian::native == std::endian::little) {
    return __builtin_bswap16(v);
  }
  return v;
}

constexpr Orv::U32 netOrder32(Orv::U32 v) noexcept {
  if constexpr (std::endian::native == std::endian::little) {
    return __builtin_bswap32(v);
  }
  return v;
}

// Loads and stores on wire bytes at any alignment: memcpy compiles to a
// single unaligned move, so packed overlays cost nothing over direct access.
inline Orv::U16 load16(const Orv::U8 *bytes) noexcept {
  Orv::U16 v;
  std::memcpy(&v, bytes, sizeof v);
  return netOrder16(v);
}

inline Orv::U32 load32(const Orv::U8 *bytes) noexcept {
  Orv::U32 v;
  std::memcpy(&v, bytes, sizeof v);
  return netOrder32(v);
}

inline void store16(Orv::U8 *bytes, Orv::U16 host) noexcept {
  const Orv::U16 v = netOrder16(host);
  std::memcpy(bytes, &v, sizeof v);
}

inline void store32(Orv::U8 *bytes, Orv::U32 host) noexcept {
  const Orv::U32 v = netOrder32(host);
  std::memcpy(bytes, &v, sizeof v);
}

// A 16-bit field as it sits on the wire. Alignment 1, so it can live at any
// offset of a packed header overlay. Default construction leaves the bytes
// as they are, which is what an overlay on received bytes needs.
class U16Nbo {
public:
  U16Nbo() noexcept = default;
  explicit U16Nbo(Orv::U16 host) noexcept { valueIs(host); }

  Orv::U16 value() const noexcept { return load16(bytes_); }
  void valueIs(Orv::U16 host) noexcept { store16(bytes_, host); }
  U16Nbo &operator=(Orv::U16 host) noexcept {
    valueIs(host);
    return *this;
  }
  bool operator==(const U16Nbo &other) const noexcept {
    return value() == other.value();
  }

private:
  Orv::U8 bytes_[2];
};
static_assert(sizeof(U16Nbo) == 2 && alignof(U16Nbo) == 1);

// A 32-bit field as it sits on the wire; see U16Nbo.
class U32Nbo {
public:
  U32Nbo() noexcept = default;
  explicit U32Nbo(Orv::U32 host) noexcept { valueIs(host); }

  Orv::U32 value() const noexcept { return load32(bytes_); }
  void valueIs(Orv::U32 host) noexcept { store32(bytes_, host); }
  U32Nbo &operator=(Orv::U32 host) noexcept {
    valueIs(host);
    return *this;
  }
  bool operator==(const U32Nbo &other) const noexcept {
    return value() == other.value();
  }

private:
  Orv::U8 bytes_[4];
};
static_assert(sizeof(U32Nbo) == 4 && alignof(U32Nbo) == 1);

} // namespace Wirx
