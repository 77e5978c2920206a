#include "Wirx/Nbo.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Wirx {
namespace {

using Orv::U8;

// Wire fields sit at any offset of a frame: loads, stores and the cells of
// packed overlays all use network order at any alignment.
TEST(NboTest, NetworkOrderAtAnyAlignment) {
  struct Overlay {
    U8 pad;
    U16Nbo small;
    U32Nbo big;
  };
  static_assert(sizeof(Overlay) == 7);
  Overlay overlay{};
  overlay.small = 0xBEEF;
  overlay.big.valueIs(0x01020304);
  U8 *raw = reinterpret_cast<U8 *>(&overlay);
  const U8 expected[7] = {0, 0xBE, 0xEF, 0x01, 0x02, 0x03, 0x04};
  EXPECT_EQ(std::memcmp(raw, expected, sizeof expected), 0);
  EXPECT_EQ(overlay.small.value(), 0xBEEF);
  EXPECT_EQ(overlay.big.value(), 0x01020304u);
  EXPECT_EQ(load16(raw + 2), 0xEF01);
  EXPECT_EQ(load32(raw + 3), 0x01020304u);
  store16(raw + 1, 0x1234);
  store32(raw + 3, 0xA1B2C3D4);
  EXPECT_EQ(overlay.small.value(), 0x1234);
  EXPECT_EQ(overlay.big.value(), 0xA1B2C3D4u);
}

} // namespace
} // namespace Wirx
