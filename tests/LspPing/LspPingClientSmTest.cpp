#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingClientListenerSm.h"
#include "LspPing/LspPingClientSmManager.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingTlvType.h"
#include "LspPing/NtpTime.h"
#include "TestSupport.h"
#include "Wirx/MemUdpPam.h"

namespace LspPing {
namespace {

using Wirx::IpAddr;

constexpr double start = 1'800'000'000.0;

// An echo reply as a client's UDP module receives it: the echo message
// alone. `dsMappings` Downstream Mapping TLVs follow; `brokenDs` names one
// whose label stack is cut so that it no longer parses.
Orv::Ptr<Wirx::Pkt> reply(U32 handle, U32 seq, NtpTimeU64 sent,
                          U32 dsMappings = 0, int brokenDs = -1,
                          U8 msgType = 2) {
  auto pkt = Wirx::Pkt::make();
  auto gen = lspPingPktGenFactory(pkt);
  gen->initializedIs(true);
  gen->addLspPingHdr(1, 0, msgType, 2, 8, 1, handle, seq, sent.seconds,
                     sent.microSeconds, 0, 0);
  if (msgType == 1) {
    gen->addLspPingTlvHdr(U16(LspPingTlvType::TargetFecStack), 0);
  }
  for (U32 i = 0; i < dsMappings; ++i) {
    LspPingDownstreamLabelStack stack;
    stack.labelEntryIs(
        0, LspPingDownstreamLabelEntry::fromWord(((2000 + i) << 12) | 0x100));
    stack.size = 1;
    gen->addLspPingDownstreamMappingTlv(
        1500, LspPingAddrType::ipv4Numbered, 0, IpAddr(0x0a010002 + i),
        IpAddr(), LspPingMultipathType::noMultipath, 0, IpAddr(),
        LspPingMultipathBitset(), stack);
    if (int(i) == brokenDs) {
      // A multipath length no value can hold.
      reinterpret_cast<U8 *>(gen->lspPingTlvHdr())[4 + 14] = 0xFF;
    }
  }
  gen->computeHdrLenChecksum();
  return pkt;
}

// The client side of one agent: configurations, status, the manager and the
// listener on an in-memory UDP module.
struct ClientSide {
  ClientSide() {
    auto config = configs->pingClientConfigIs(7);
    config->srcIpAddrIs(IpAddr(0x0a000001));
  }
  Orv::Ptr<LspPingClientStatus> status(U32 id) const {
    return statuses->pingClientStatus(id);
  }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, start};
  Orv::Ptr<LspPingClientConfigColl> configs =
      lspPingClientConfigCollFactory("lpccc");
  Orv::Ptr<LspPingClientStatusColl> statuses =
      lspPingClientStatusCollFactory("lpcsc");
  Orv::Ptr<LspPingClientSmColl> sms = lspPingClientSmCollFactory("lpcsmc");
  Orv::Ptr<LspPingClientRxMsgPipeColl> pipes =
      lspPingClientRxMsgPipeCollFactory("lpcrpc");
  Orv::Ptr<LspPingClientSmManager> manager =
      lspPingClientSmManagerFactory(configs, statuses, sms, pipes, wheel);
  Orv::Ptr<Wirx::MemUdpPam> udp = Orv::make<Wirx::MemUdpPam>("udp", 49152);
  Orv::Ptr<LspPingClientListenerSm> listener =
      lspPingClientListenerSmFactory(udp, pipes, wheel, configs);
};

const IpAddr responder(0x0a000002);

TEST(LspPingClientRxSm, RecordsEachReplyUnderItsSequenceSlot) {
  ClientSide c;
  c.time.runFor(0.25);
  const NtpTimeU64 sent = NtpTime::ntpTime();
  c.udp->rxPktIs(responder, 3503, reply(7, 257, sent));
  // 1.5 ms in NTP fraction units, rounded up so that it reads back whole.
  const NtpTimeU64 earlier{sent.seconds, sent.microSeconds - 6442451};
  c.udp->rxPktIs(responder, 3503, reply(7, 258, earlier));
  // A stamp from the future (a stepped clock, a forged reply) gives a
  // meaningless value, but a defined one: the negative count wrapped.
  const NtpTimeU64 later{sent.seconds, sent.microSeconds + 6442451};
  c.udp->rxPktIs(responder, 3503, reply(7, 259, later));
  const auto &ring = c.status(7)->replyPktInfo();
  ASSERT_EQ(ring.size(), 3u);
  EXPECT_EQ(ring[3].roundTrip, U32(-1500));
  const LspPingReplyPktInfo &first = ring[1];
  EXPECT_EQ(first.seqNum, 257u);
  EXPECT_EQ(first.retCode, LspPingReturnCode::labelSwitchedAtStackDep);
  EXPECT_EQ(first.replyHost, Wirx::IpGenAddr(responder));
  EXPECT_EQ(first.roundTrip, 0u);
  EXPECT_EQ(ring[2].roundTrip, 1500u);
  EXPECT_TRUE(!first.intfAndLabelStackInfo);
  EXPECT_TRUE(first.downstreamMappingInfo.empty());

  c.udp->rxPktIs(responder, 3503, reply(7, 257, sent, 1));
  EXPECT_EQ(ring[1].downstreamMappingInfo.size(), 1u) << "the later one wins";
}

TEST(LspPingClientRxSm, DownstreamMappingsInPacketOrderOrNotAtAll) {
  ClientSide c;
  const NtpTimeU64 sent = NtpTime::ntpTime();
  c.udp->rxPktIs(responder, 3503, reply(7, 1, sent, 3));
  const LspPingReplyPktInfo &info = c.status(7)->replyPktInfo()[1];
  ASSERT_EQ(info.downstreamMappingInfo.size(), 3u);
  for (U32 i = 0; i < 3; ++i) {
    EXPECT_EQ(info.downstreamMappingInfo[i].dsIpAddr,
              Wirx::IpGenAddr(IpAddr(0x0a010002 + i)));
  }
  c.udp->rxPktIs(responder, 3503, reply(7, 2, sent, 3, 1));
  EXPECT_FALSE(c.status(7)->replyPktInfo().contains(2));
}

// A reply to a deleted client is dropped too: the end-to-end runs show it,
// with the listener's runs on its time budget.
TEST(LspPingClientListenerSm, DropsWhatIsNotAReplyForAClient) {
  ClientSide c;
  TestSupport::TraceCapture log("LspPing/LspPingClientSm", 9);
  const NtpTimeU64 sent = NtpTime::ntpTime();
  c.udp->rxPktIs(responder, 3503, reply(7, 1, sent, 0, -1, 1));
  c.udp->rxPktIs(IpAddr(0x0a000001), 3503, reply(7, 2, sent));
  c.udp->rxPktIs(responder, 3503, reply(99, 3, sent));
  EXPECT_TRUE(c.status(7)->replyPktInfo().empty());
  EXPECT_EQ(
      log.at(9),
      (std::vector<std::string>{
          "Dropping unexpected LspPing Echo Request", "senderHandle:7",
          "Reply from local LspPing Agent. Discard.", "senderHandle:99"}));
  EXPECT_EQ(c.udp->rxQueued(), 0u);
}

TEST(LspPingClientSmManager, MachineryFollowsTheConfiguration) {
  auto configs = lspPingClientConfigCollFactory("lpccc");
  configs->pingClientConfigIs(3);
  ClientSide c;
  EXPECT_NE(c.sms->pingClientTxSm(7), nullptr) << "present before start";
  EXPECT_NE(c.sms->pingClientRxSm(7), nullptr);
  EXPECT_NE(c.pipes->clientRxMsgPipe(7), nullptr);
  EXPECT_EQ(c.pipes->clientRxMsgPipe(7)->name().stringValue(), "pam");

  struct Order : Orv::Reactor {
    std::vector<std::string> seen;
  } order;
  order.watch(*c.sms, LspPingClientSmColl::pingClientTxSmAttr,
              [&](const U32 &) { order.seen.push_back("tx"); });
  order.watch(*c.sms, LspPingClientSmColl::pingClientRxSmAttr,
              [&](const U32 &) { order.seen.push_back("rx"); });
  order.watch(*c.pipes, LspPingClientRxMsgPipeColl::clientRxMsgPipeAttr,
              [&](const U32 &) { order.seen.push_back("pipe"); });
  order.watch(*c.statuses, LspPingClientStatusColl::pingClientStatusAttr,
              [&](const U32 &) { order.seen.push_back("status"); });
  const Orv::Ptr<LspPingClientTxSm> txSm = c.sms->pingClientTxSm(7);
  c.configs->pingClientConfigDel(7);
  EXPECT_EQ(order.seen,
            (std::vector<std::string>{"tx", "rx", "pipe", "status"}));
  EXPECT_FALSE(txSm->initialized());

  c.configs->pingClientConfigIs(8);
  EXPECT_NE(c.sms->pingClientTxSm(8), nullptr);
  EXPECT_EQ(order.seen.back(), "tx") << "the transmit side comes last";
}

} // namespace
} // namespace LspPing
