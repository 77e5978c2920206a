#include "Wirx/Nbo.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Wirx {
namespace {

using Orv::U8;

TEST(NboTest, LoadsAndStoresUseNetworkOrderAtAnyAlignment) {
  U8 bytes[7] = {};
  store16(bytes + 1, 0x1234);
  store32(bytes + 3, 0xA1B2C3D4);
  const U8 expected[7] = {0, 0x12, 0x34, 0xA1, 0xB2, 0xC3, 0xD4};
  EXPECT_EQ(std::memcmp(bytes, expected, sizeof bytes), 0);
  EXPECT_EQ(load16(bytes + 1), 0x1234);
  EXPECT_EQ(load32(bytes + 3), 0xA1B2C3D4u);
  EXPECT_EQ(load16(bytes + 2), 0x34A1);
}

TEST(NboTest, CellsHoldWireBytesAndGiveHostValues) {
  struct Overlay {
    U8 pad;
    U16Nbo small;
    U32Nbo big;
  };
  static_assert(sizeof(Overlay) == 7);
  Overlay overlay{};
  overlay.small = 0xBEEF;
  overlay.big.valueIs(0x01020304);
  const U8 *raw = reinterpret_cast<const U8 *>(&overlay);
  EXPECT_EQ(raw[1], 0xBE);
  EXPECT_EQ(raw[2], 0xEF);
  EXPECT_EQ(raw[3], 0x01);
  EXPECT_EQ(raw[6], 0x04);
  EXPECT_EQ(overlay.small.value(), 0xBEEF);
  EXPECT_EQ(overlay.big.value(), 0x01020304u);
  EXPECT_EQ(overlay.big, U32Nbo(0x01020304));
  EXPECT_FALSE(overlay.small == U16Nbo(0xEFBE));
}

} // namespace
} // namespace Wirx
