#include <gtest/gtest.h>

#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingClientConfig.h"
#include "LspPing/LspPingClientStatus.h"
#include "LspPing/LspPingClientTxSm.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTargetFecTlvParser.h"
#include "MplsUtils/EthPktParser.h"
#include "Orv/Clock.h"
#include "Wirx/MemPam.h"

namespace LspPing {
namespace {

constexpr double start = 1'800'000'000.0;

// A packet-access module that notes when each frame left.
class TimedPam : public Wirx::MemPam {
public:
  TimedPam() : MemPam("tx") {}
  void txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) override {
    sentAt.push_back(Orv::now());
    MemPam::txPktIs(pkt);
  }
  std::vector<double> sentAt;
};

// One client with its transmit state machine on a virtual clock.
struct Client {
  Client() {
    config->srcIpAddrIs(Wirx::IpAddr(0x0a000001));
    config->dstIpAddrIs(Wirx::IpAddr(0x7f000001));
    config->srcUdpPortIs(49152);
    config->mplsLabelIs(0, Wirx::MplsLabel(100));
    config->mplsTtlIs(0, 255);
    config->tunnelTypeIs(LspPingTunnelType::tunnelLdpIpv4);
    config->dstPrefixIs(Wirx::IpGenPrefix(Wirx::IpAddr(0x0a010101), 32));
    txSm->lspPingClientTxPamIs(pam);
  }
  // Enabled for one request, run until it is sent.
  void sendOne() {
    config->txCountIs(1);
    config->enabledIs(true);
    time.runFor(2);
  }
  // The frame sent, parsed down to the echo message.
  struct Sent {
    std::vector<Orv::U8> bytes;
    MplsUtils::EthPktParser eth;
    Orv::Ptr<LspPingPduParser> pdu;
    explicit Sent(const std::vector<Orv::U8> &frame)
        : bytes(frame), eth(bytes.data(), Orv::U32(bytes.size())) {
      pdu = lspPingPduParserFactory(
          Wirx::Pkt::copyOf(bytes.data(), Orv::U32(bytes.size())),
          eth.udpPayloadOffset());
      pdu->initializedIs(true);
    }
  };
  Sent frame(std::size_t i) const { return Sent(pam->frames().at(i)); }
  Orv::Ptr<LspPingTargetFecTlvParser> fec(std::size_t i) const {
    Sent sent = frame(i);
    auto parser = lspPingTargetFecTlvParserFactory(sent.pdu->pkt(),
                                                   sent.pdu->tlvOffset(0) + 4);
    parser->initializedIs(true);
    return parser;
  }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, start};
  Orv::Ptr<LspPingClientConfig> config = lspPingClientConfigFactory(7);
  Orv::Ptr<LspPingClientStatus> status = lspPingClientStatusFactory(7);
  Orv::Ptr<TimedPam> pam = Orv::make<TimedPam>();
  Orv::Ptr<LspPingClientTxSm> txSm =
      lspPingClientTxSmFactory(7, config, status, wheel);
};

TEST(LspPingClientTxSm, SendsTheCountAtTheIntervalAfterTheDelay) {
  Client c;
  c.config->txCountIs(3);
  c.config->txRateIs(0.5);
  c.config->pktDelayIs(2);
  c.time.runFor(10);
  EXPECT_TRUE(c.pam->sentAt.empty()) << "disabled";
  c.config->enabledIs(true);
  const double t = c.time.now();
  c.time.runFor(60);
  EXPECT_EQ(c.pam->sentAt, (std::vector<double>{t + 2, t + 2.5, t + 3}));
  EXPECT_EQ(c.status->sequenceNum(), 3u);
  EXPECT_EQ(c.txSm->lspPingTxTimerTimeMin(), Kiv::Timer::never);
  for (std::size_t i = 0; i < 3; ++i) {
    const LspPingHdr *hdr = c.frame(i).pdu->lspPingHdr();
    ASSERT_NE(hdr, nullptr);
    EXPECT_EQ(hdr->sequenceNumber(), i + 1);
    EXPECT_EQ(hdr->senderHandle(), 7u);
    EXPECT_EQ(hdr->replyMode, 2);
  }
}

TEST(LspPingClientTxSm, DeletedMachineSendsNothing) {
  Client c;
  c.config->txCountIs(-1);
  c.config->enabledIs(true);
  c.txSm->handleDelete();
  c.time.runFor(10);
  EXPECT_TRUE(c.pam->frames().empty());
}

// Each tunnel type's FEC is read on the wire by the capture cross-check;
// here, that every part of an RSVP session lands in its own field.
TEST(LspPingClientTxSm, RsvpFecCarriesTheWholeSession) {
  Client c;
  c.config->tunnelTypeIs(LspPingTunnelType::tunnelRsvpIpv4);
  c.config->rsvpSpIdIs(
      Rsvp::RsvpSpId{Wirx::IpAddr(0xc0000201), 7, Wirx::IpAddr(0xc0000202), 9});
  c.config->rsvpSenderAddrIs(Wirx::IpAddr(0xc0000203));
  c.sendOne();
  EXPECT_EQ(c.fec(0)->rsvpSpId(), c.config->rsvpSpId());
  EXPECT_EQ(c.fec(0)->rsvpSenderAddr().stringValue(), "192.0.2.3");
}

TEST(LspPingClientTxSm, LabelStackBottomAndTtlDefaults) {
  Client c;
  c.config->mplsLabelIs(1, Wirx::MplsLabel(200));
  c.config->mplsLabelIs(2, Wirx::MplsLabel(300));
  c.config->mplsTtlIs(2, 64);
  c.config->mplsTcIs(5);
  c.sendOne();
  const Client::Sent sent = c.frame(0);
  const Wirx::MplsLabelStack &labels = sent.eth.labelStack();
  ASSERT_EQ(labels.size(), 3u);
  for (Orv::U32 i = 0; i < 3; ++i) {
    EXPECT_EQ(labels[i].bos(), i == 2) << i;
    EXPECT_EQ(labels[i].tc(), 5) << i;
  }
  EXPECT_EQ(labels[0].ttl(), 255);
  EXPECT_EQ(labels[1].ttl(), 0) << "no TTL configured";
  EXPECT_EQ(labels[2].ttl(), 64);
  EXPECT_EQ(sent.eth.ipTtl(), 1);
}

TEST(LspPingClientTxSm, ImplicitNullOnTopPingsOverPlainIp) {
  Client v4;
  v4.config->mplsLabelIs(0, Wirx::MplsLabel(3));
  v4.sendOne();
  EXPECT_EQ(v4.frame(0).eth.etherType(), 0x0800);
  EXPECT_TRUE(v4.frame(0).eth.labelStack().empty());
  EXPECT_TRUE(v4.frame(0).pdu->valid());

  Client none;
  none.config->mplsLabelDelAll();
  none.sendOne();
  const std::vector<Orv::U8> &bytes = none.pam->frames().at(0);
  EXPECT_EQ(bytes[12], 0x88);
  EXPECT_EQ(bytes[13], 0x47);
  EXPECT_EQ(bytes[14] >> 4, 4) << "the IPv4 header follows at once";
}

TEST(LspPingClientTxSm, DownstreamMappingOnlyWhenValid) {
  Client c;
  LspPingDownstreamMappingInfo ds;
  ds.mtu = 1500;
  ds.addrType = 1;
  ds.dsIpAddr = Wirx::IpAddr(0x0a000002);
  ds.dsIntfAddr = Wirx::IpAddr(0x0a000003);
  ds.labelStack.labelEntryIs(
      0, LspPingDownstreamLabelEntry::fromWord(0x00064100 | 3));
  ds.labelStack.size = 1;
  c.config->dsMappingInfoIs(ds);
  c.config->txCountIs(2);
  c.config->enabledIs(true);
  c.time.runFor(1.5);
  EXPECT_EQ(c.frame(0).pdu->tlvNum(), 1u) << "an invalid mapping is left out";
  ds.valid = true;
  c.config->dsMappingInfoIs(ds);
  c.time.runFor(1);
  const Client::Sent sent = c.frame(1);
  ASSERT_TRUE(sent.pdu->valid()) << sent.pdu->reason();
  ASSERT_EQ(sent.pdu->tlvNum(), 2u);
  ASSERT_NE(sent.pdu->tlvGroupParser()->tlvTypeOffset(2), nullptr);
}

} // namespace
} // namespace LspPing
