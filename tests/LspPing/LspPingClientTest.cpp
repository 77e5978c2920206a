#include <gtest/gtest.h>

#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingReplyPktInfo.h"
#include "Wirx/IpAddr.h"

namespace LspPing {
namespace {

// What a client does before anyone sets anything: its count is unset, not
// zero, and it is not enabled.
TEST(LspPingClientConfig, NewConfigurationHoldsTheDefaults) {
  auto configs = lspPingClientConfigCollFactory("lpccc");
  auto config = configs->pingClientConfigIs(42);
  EXPECT_EQ(config->clientId(), 42u);
  EXPECT_EQ(config->txCount(), LspPingTxCountConstants::invalid);
  EXPECT_EQ(config->txRate(), 1.0);
  EXPECT_EQ(config->txPktMaxNum(), 30u);
  EXPECT_EQ(config->pktTimeout(), 1.0);
  EXPECT_EQ(config->pktDelay(), 1.0);
  EXPECT_EQ(config->dstUdpPort(), 3503);
  EXPECT_EQ(config->mode(), LspPingMode::modeLspPing);
  EXPECT_EQ(config->tunnelType(), LspPingTunnelType::tunnelUnknown);
  EXPECT_FALSE(config->enabled());
  EXPECT_EQ(config->reason(), "");
  EXPECT_EQ(configs->pingClientConfigIs(42), config) << "existing entry kept";
}

TEST(LspPingReplyPktInfoDeathTest, PrintsButIsNeverBuiltFromText) {
  LspPingReplyPktInfo info(5, LspPingReturnCode::labelSwitchedAtStackDep,
                           Wirx::IpAddr(0x0a000002), 1500);
  const std::string text = Orv::valueText(info);
  EXPECT_EQ(
      text.rfind("Value('LspPing::LspPingReplyPktInfo', ** {'seqNum': 5, "
                 "'retCode': labelSwitchedAtStackDep, 'replyHost': "
                 "'10.0.0.2', 'roundTrip': 1500, 'intfAndLabelStackInfo': ",
                 0),
      0u)
      << text;
  EXPECT_DEATH(
      Orv::valueFromText<LspPingReplyPktInfo>(text),
      "No String constructor for LspPingReplyPktInfo - has collection");
}

} // namespace
} // namespace LspPing
