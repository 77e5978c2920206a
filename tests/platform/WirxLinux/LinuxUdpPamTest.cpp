// The UDP module on loopback: the source address chosen or left to the
// kernel, the sender and the local address read on arrival, both
// families; and its failures.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "Netns.h"
#include "Orv/Reactor.h"
#include "Wirx/LinuxUdpPam.h"
#include "Wirx/Pkt.h"

namespace {

using Wirx::AddrFamily;
using Wirx::IpGenAddr;

IpGenAddr addr(const char *text) { return *IpGenAddr::fromString(text); }

Orv::Ptr<Wirx::LinuxUdpPam> open(Kiv::EventLoop &loop, AddrFamily family) {
  std::string error;
  auto pam = Wirx::LinuxUdpPam::open(loop, family, 0, error);
  EXPECT_TRUE(pam) << error;
  EXPECT_NE(pam ? pam->port() : 0, 0) << "the kernel's port is told";
  return pam;
}

Orv::Ptr<Wirx::Pkt> payload(const std::string &text) {
  return Wirx::Pkt::copyOf(reinterpret_cast<const Orv::U8 *>(text.data()),
                           Orv::U32(text.size()));
}

TEST(LinuxUdpPam, SendsFromTheChosenSourceAndReadsBothEnds) {
  const struct {
    AddrFamily family;
    const char *src; // "unspecified": the kernel picks
    const char *dst;
    const char *seenFrom;
  } cases[] = {
      {AddrFamily::ipv4, "127.0.0.2", "127.0.0.1", "127.0.0.2"},
      {AddrFamily::ipv4, "unspecified", "127.0.0.3", "127.0.0.1"},
      {AddrFamily::ipv4, "0.0.0.0", "127.0.0.1", "127.0.0.1"},
      {AddrFamily::ipv6, "::1", "::1", "::1"},
      {AddrFamily::ipv6, "unspecified", "::1", "::1"},
  };
  Kiv::EventLoop loop;
  for (const auto &c : cases) {
    SCOPED_TRACE(std::string(c.src) + " -> " + c.dst);
    const auto tx = open(loop, c.family);
    const auto rx = open(loop, c.family);
    ASSERT_TRUE(tx && rx);
    tx->txSrcAddrIs(addr(c.src));
    tx->txDstAddrIs(addr(c.dst));
    tx->txDstPortIs(rx->port());
    tx->txPktIs(payload("echo"));
    EXPECT_EQ(tx->error(), "");
    Orv::Ptr<Wirx::Pkt> got;
    EXPECT_TRUE(
        LspPingTest::runUntil(loop, [&] { return !!(got = rx->rxPkt()); }));
    ASSERT_TRUE(got);
    EXPECT_EQ(std::string(got->data(), got->data() + got->frontBytes()),
              "echo");
    EXPECT_EQ(rx->rxSrcAddr(), addr(c.seenFrom));
    EXPECT_EQ(rx->rxSrcPort(), tx->port());
    EXPECT_EQ(rx->rxDstAddr(), addr(c.dst));
    EXPECT_FALSE(rx->rxPkt());
    EXPECT_TRUE(!rx->rxSrcAddr()) << "unset after an empty read";
  }
}

TEST(LinuxUdpPam, HeldPayloadsLeaveTogetherEachToldInOrder) {
  Kiv::EventLoop loop;
  const auto tx = open(loop, AddrFamily::ipv4);
  const auto rx = open(loop, AddrFamily::ipv4);
  ASSERT_TRUE(tx && rx);
  std::vector<int> done;
  tx->txDoneIs([&](int errnum) { done.push_back(errnum); });
  tx->txDstAddrIs(addr("127.0.0.1"));
  tx->txDstPortIs(rx->port());
  tx->txHoldIs(true);
  for (const char *source : {"127.0.0.1", "192.0.2.1", "127.0.0.2"}) {
    tx->txSrcAddrIs(addr(source));
    tx->txPktIs(payload(source));
  }
  EXPECT_TRUE(done.empty()) << "nothing leaves while held";
  tx->txHoldIs(false);
  // A source that is no address of the host fails alone.
  ASSERT_EQ(done.size(), 3u);
  EXPECT_EQ(done[0], 0);
  EXPECT_NE(done[1], 0);
  EXPECT_EQ(done[2], 0);
  std::vector<std::string> got;
  EXPECT_TRUE(LspPingTest::runUntil(loop, [&] {
    while (const auto pkt = rx->rxPkt()) {
      got.emplace_back(pkt->data(), pkt->data() + pkt->frontBytes());
    }
    return got.size() == 2;
  }));
  EXPECT_EQ(got, (std::vector<std::string>{"127.0.0.1", "127.0.0.2"}));
  EXPECT_EQ(tx->txErrors(), 1u);
}

// One readiness lets readers take as many batches as the host allows, and
// no more; the rest waits for the next.
TEST(LinuxUdpPam, AReadinessGivesAsManyBatchesAsAllowed) {
  Kiv::EventLoop loop;
  const auto tx = open(loop, AddrFamily::ipv4);
  const auto rx = open(loop, AddrFamily::ipv4);
  ASSERT_TRUE(tx && rx);
  rx->rxBatchesIs(2);
  tx->txDstAddrIs(addr("127.0.0.1"));
  tx->txDstPortIs(rx->port());
  const Orv::U32 sent = 3 * Wirx::LinuxUdpPam::batchSize;
  for (Orv::U32 i = 0; i < sent; ++i) {
    tx->txPktIs(payload("x"));
  }
  std::vector<Orv::U32> perReadiness;
  Orv::Reactor reader;
  reader.watch(*rx, Wirx::Pam::readableCountAttr, [&] {
    perReadiness.push_back(0);
    while (rx->rxPkt()) {
      ++perReadiness.back();
    }
  });
  EXPECT_TRUE(
      LspPingTest::runUntil(loop, [&] { return perReadiness.size() == 2; }));
  EXPECT_EQ(perReadiness,
            (std::vector<Orv::U32>{2 * Wirx::LinuxUdpPam::batchSize,
                                   Wirx::LinuxUdpPam::batchSize}));
}

TEST(LinuxUdpPam, FailuresAreCountedAndToldInOneLine) {
  Kiv::EventLoop loop;
  const auto pam = open(loop, AddrFamily::ipv6);
  ASSERT_TRUE(pam);
  const std::string label = "udp6 port " + std::to_string(pam->port());

  pam->txDstAddrIs(addr("127.0.0.1"));
  pam->txDstPortIs(9);
  pam->txPktIs(payload("x"));
  EXPECT_EQ(pam->txErrno(), EAFNOSUPPORT);
  EXPECT_EQ(pam->error(),
            label + ": send to 127.0.0.1: Address family not supported by "
                    "protocol");

  // A source that is no address of the host is refused before anything
  // leaves.
  pam->txDstAddrIs(addr("::1"));
  pam->txSrcAddrIs(addr("2001:db8::99"));
  pam->txPktIs(payload("x"));
  EXPECT_EQ(pam->txErrors(), 2u);
  EXPECT_EQ(pam->error(), label + ": send to ::1 port 9: Invalid argument");

  std::string error;
  EXPECT_FALSE(
      Wirx::LinuxUdpPam::open(loop, AddrFamily::ipv6, pam->port(), error));
  EXPECT_EQ(error, label + ": cannot bind: Address already in use");
}

} // namespace
