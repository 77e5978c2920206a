#include <gtest/gtest.h>

#include <sstream>

#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingMultipathType.h"
#include "LspPing/LspPingReturnCode.h"
#include "LspPing/LspPingTargetFecSubTlvType.h"
#include "LspPing/LspPingTlvType.h"
#include "LspPing/LspPingTunnelType.h"

namespace LspPing {
namespace {

TEST(LspPingEnum, NamesAndValuesAsOnTheWire) {
  EXPECT_EQ(stringValue(LspPingReturnCode::labelSwitchedAtStackDep),
            "labelSwitchedAtStackDep");
  EXPECT_EQ(U32(LspPingReturnCode::premTermination), 13u);
  EXPECT_EQ(LspPingTargetFecSubTlvTypeInstance(0x7C00),
            LspPingTargetFecSubTlvType::SRIpv4);
  EXPECT_EQ(stringValue(LspPingTargetFecSubTlvTypeInstance(35)), "SRIpv6");
  EXPECT_EQ(stringValue(LspPingTargetFecSubTlvTypeInstance(0x7C01)),
            "SRIpv6Deprecated");
  EXPECT_EQ(LspPingTlvTypeInstance("IntfAndLabelStack"),
            LspPingTlvType::IntfAndLabelStack);
  std::ostringstream os;
  os << LspPingTunnelType::tunnelSrIpv6;
  EXPECT_EQ(os.str(), "tunnelSrIpv6");
}

TEST(LspPingEnum, GapsHaveNoName) {
  EXPECT_EQ(stringValue(LspPingTargetFecSubTlvTypeInstance(34)),
            "LspPingTargetFecSubTlvType(34)");
  EXPECT_EQ(stringValue(LspPingTargetFecSubTlvTypeInstance(9)),
            "LspPingTargetFecSubTlvType(9)");
  for (U32 gap : {1u, 3u, 5u, 6u, 7u}) {
    EXPECT_TRUE(
        Orv::EnumTraits<LspPingMultipathType>::type.nameOf(gap).empty());
  }
  EXPECT_TRUE(Orv::EnumTraits<LspPingAddrType>::type.nameOf(0).empty());
  EXPECT_EQ(LspPingAddrTypeInstance("LspPingAddrType(0)"), LspPingAddrType(0));
  EXPECT_THROW(LspPingAddrTypeInstance("ipv5"), Orv::RangeError);
}

TEST(LspPingEnum, EveryEnumerationIsRegisteredInTableOrder) {
  const Orv::EnumType *type =
      Orv::enumType("LspPing::LspPingTargetFecSubTlvType");
  ASSERT_NE(type, nullptr);
  ASSERT_EQ(type->entries().size(), 18u);
  EXPECT_EQ(type->entries()[8].name, "FEC128Pseudowire");
  EXPECT_EQ(type->entries()[15].value, 0x7C00u);
  for (const char *name :
       {"LspPing::LspPingMsgType", "LspPing::LspPingReplyMode",
        "LspPing::LspPingReturnCode", "LspPing::LspPingTlvType",
        "LspPing::LspPingAddrType", "LspPing::LspPingMultipathType",
        "LspPing::LspPingIntfAndLabelStackTlvIpAndIntfLen",
        "LspPing::LspPingDownstreamMappingTlvIpAndIntfLen",
        "LspPing::LspPingSrIgpProtocol", "LspPing::LspPingTunnelType",
        "LspPing::LspPingMode",
        "LspPing::LspPingDownstreamSignalingProtocol"}) {
    EXPECT_NE(Orv::enumType(name), nullptr) << name;
  }
}

TEST(LspPingEnum, ConstantNamesTheService) {
  const LspPingConstant constant = lspPingConstantFactory();
  EXPECT_EQ(constant.lspPingServiceName, "lspPing");
  EXPECT_EQ(constant.lspPingUdpPort, 3503);
}

} // namespace
} // namespace LspPing
