#include <gtest/gtest.h>

#include <vector>

#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientStatusColl.h"
#include "LspPing/LspPingPktConstants.h"
#include "Orv/Reactor.h"
#include "Wirx/IpAddr.h"

namespace LspPing {
namespace {

struct ChangeLog : Orv::Reactor {
  std::vector<Orv::AttrId> attrs;
  void watchEverything(const Orv::Entity &entity) {
    watchAll(entity, [this](Orv::AttrId id) { attrs.push_back(id); });
  }
};

TEST(LspPingClientConfig, NewConfigurationHoldsTheDefaults) {
  auto configs = lspPingClientConfigCollFactory("lpccc");
  auto config = configs->pingClientConfigIs(42);
  EXPECT_EQ(config->clientId(), 42u);
  EXPECT_EQ(config->parent(), configs.get());
  EXPECT_EQ(config->txCount(), -2);
  EXPECT_EQ(config->txRate(), 1.0);
  EXPECT_EQ(config->txPktMaxNum(), 30u);
  EXPECT_EQ(config->pktTimeout(), 1.0);
  EXPECT_EQ(config->pktDelay(), 1.0);
  EXPECT_EQ(config->dstUdpPort(), 3503);
  EXPECT_EQ(config->mode(), LspPingMode::modeLspPing);
  EXPECT_EQ(config->tunnelType(), LspPingTunnelType::tunnelUnknown);
  EXPECT_FALSE(config->enabled());
  EXPECT_TRUE(config->reason().empty());
  EXPECT_TRUE(!config->srcIpAddr());
  EXPECT_TRUE(!config->dsMappingInfo());
  EXPECT_TRUE(!config->pwInfo());
  EXPECT_TRUE(!config->rsvpSpId());
  EXPECT_EQ(configs->pingClientConfigIs(42), config) << "existing entry kept";
}

TEST(LspPingClientConfig, NotifiesOnlyOnChange) {
  auto config = lspPingClientConfigFactory(1);
  ChangeLog log;
  log.watchEverything(*config);
  config->txCountIs(-2);
  config->txCountIs(5);
  config->txCountIs(5);
  config->mplsLabelIs(0, Wirx::MplsLabel(100));
  config->mplsLabelIs(0, Wirx::MplsLabel(100));
  config->mplsTtlIs(0, 255);
  config->srcIpAddrIs(Wirx::IpAddr(0x0a000001));
  config->srcIpAddrIs(Wirx::IpAddr(0x0a000001));
  config->mplsLabelDelAll();
  EXPECT_EQ(log.attrs,
            (std::vector<Orv::AttrId>{LspPingClientConfig::txCountAttr.id,
                                      LspPingClientConfig::mplsLabelAttr.id,
                                      LspPingClientConfig::mplsTtlAttr.id,
                                      LspPingClientConfig::srcIpAddrAttr.id,
                                      LspPingClientConfig::mplsLabelAttr.id}));
  EXPECT_EQ(config->mplsTtl(0), 255);
  EXPECT_EQ(config->mplsLabel(0), Wirx::MplsLabel()) << "a missing index";
}

TEST(LspPingClientConfigColl, NotifiesPerKeyAddedOrRemoved) {
  auto configs = lspPingClientConfigCollFactory("lpccc");
  struct Keys : Orv::Reactor {
    std::vector<U32> seen;
  } keys;
  keys.watch(*configs, LspPingClientConfigColl::pingClientConfigAttr,
             [&](const U32 &id) { keys.seen.push_back(id); });
  configs->pingClientConfigIs(3);
  configs->pingClientConfigIs(3);
  configs->pingClientConfigIs(9);
  configs->pingClientConfigDel(3);
  configs->pingClientConfigDelAll();
  EXPECT_EQ(keys.seen, (std::vector<U32>{3, 9, 3, 9}));
  EXPECT_EQ(configs->pingClientConfig(9), nullptr);
}

TEST(LspPingClientStatus, SequenceNumberAndTheReplyRing) {
  auto statuses = lspPingClientStatusCollFactory("lpcsc");
  auto status = statuses->pingClientStatusIs(7);
  ChangeLog log;
  log.watchEverything(*status);
  status->sequenceNumInc(0);
  status->sequenceNumInc(2);
  EXPECT_EQ(status->sequenceNum(), 2u);
  EXPECT_EQ(log.attrs.size(), 1u);

  const Wirx::IpGenAddr host = Wirx::IpAddr(0x0a000002);
  for (U32 seq : {44u, 300u}) {
    status->replyPktInfoIs(U8(seq), lspPingReplyPktInfoFactory(
                                        seq, LspPingReturnCode::repRouterEgress,
                                        host, 1000 + seq));
  }
  ASSERT_EQ(status->replyPktInfo().size(), 1u);
  EXPECT_EQ(status->replyPktInfo()[44].seqNum, 300u);
  EXPECT_EQ(status->lastReplyPktSeq(), 0u);
}

TEST(LspPingReplyPktInfo, PrintsButIsNeverBuiltFromText) {
  LspPingReplyPktInfo info(5, LspPingReturnCode::labelSwitchedAtStackDep,
                           Wirx::IpAddr(0x0a000002), 1500);
  EXPECT_FALSE(!info);
  EXPECT_TRUE(!LspPingReplyPktInfo());
  LspPingDownstreamMappingInfo mapping;
  mapping.mtu = 1500;
  info.downstreamMappingInfoIs(0, mapping);
  EXPECT_NE(info,
            LspPingReplyPktInfo(5, LspPingReturnCode::labelSwitchedAtStackDep,
                                Wirx::IpAddr(0x0a000002), 1500));
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

TEST(LspPingConstants, FixedNumbers) {
  const LspPingPktConstants pkt = lspPingPktConstantsFactory();
  EXPECT_EQ(pkt.version, 1);
  EXPECT_EQ(pkt.mplsUnicast, 0x8847);
  EXPECT_EQ(pkt.reqDestUdpPort, 3503);
  EXPECT_EQ(pkt.prefixLength, 32);
  EXPECT_TRUE(pkt == LspPingPktConstants{});
  EXPECT_EQ(lspPingTxCountConstantsFactory().infinite, -1);
}

} // namespace
} // namespace LspPing
