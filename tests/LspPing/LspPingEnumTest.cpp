#include <gtest/gtest.h>

#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingTargetFecSubTlvType.h"

namespace LspPing {
namespace {

// Registered when the library is loaded, so that the hosting agent can show
// and set attributes of these types by name: every name reads back as its
// value.
TEST(LspPingEnum, EveryEnumerationIsRegisteredAndItsNamesReadBack) {
  for (const char *name :
       {"LspPing::LspPingMsgType", "LspPing::LspPingReplyMode",
        "LspPing::LspPingReturnCode", "LspPing::LspPingTlvType",
        "LspPing::LspPingTargetFecSubTlvType", "LspPing::LspPingAddrType",
        "LspPing::LspPingMultipathType",
        "LspPing::LspPingIntfAndLabelStackTlvIpAndIntfLen",
        "LspPing::LspPingDownstreamMappingTlvIpAndIntfLen",
        "LspPing::LspPingSrIgpProtocol", "LspPing::LspPingTunnelType",
        "LspPing::LspPingMode",
        "LspPing::LspPingDownstreamSignalingProtocol"}) {
    const Orv::EnumType *type = Orv::enumType(name);
    ASSERT_NE(type, nullptr) << name;
    for (const Orv::EnumEntry &entry : type->entries()) {
      EXPECT_EQ(type->text(entry.value), entry.name) << name;
      EXPECT_EQ(type->valueOf(entry.name), entry.value) << name;
    }
  }
}

// A value without a name reads back from its numbered text; no other text
// does.
TEST(LspPingEnum, GapsHaveNumberedTexts) {
  EXPECT_EQ(stringValue(LspPingTargetFecSubTlvTypeInstance(34)),
            "LspPingTargetFecSubTlvType(34)");
  EXPECT_EQ(stringValue(LspPingTargetFecSubTlvTypeInstance(0x7C01)),
            "SRIpv6Deprecated");
  EXPECT_EQ(LspPingAddrTypeInstance("LspPingAddrType(0)"), LspPingAddrType(0));
  EXPECT_THROW(LspPingAddrTypeInstance("ipv5"), Orv::RangeError);
}

} // namespace
} // namespace LspPing
