#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "LspPing/Bytes.h"
#include "LspPing/PlatformProbeSm.h"
#include "MplsUtils/EthPktParser.h"
#include "TestSupport.h"

namespace {

using namespace LspPing::PlatformProbe;
using PacketTracer::RequestId;
using Wirx::IpGenAddr;

const std::string kName = "lspping";

// Ethernet, labels 100 and 200 (bottom, TTL 255), IPv4 10.0.0.1 ->
// 127.0.0.1 TTL 64 UDP, then UDP to port 3503.
const char *const kIpv4Frame = "000000000002 000000000001 8847"
                               "| 00064040 | 000c81ff"
                               "| 4500 001c 0000 0000 40 11 0000"
                               "  0a000001 7f000001"
                               "| 0ed6 0daf 0008 0000";

// Ethernet, label 300 (bottom), IPv6 2001:db8::1 -> ::1, flow label 0x12345,
// hop limit 1, UDP.
const char *const kIpv6Frame = "000000000002 000000000001 8847"
                               "| 0012c1ff"
                               "| 60012345 0008 11 01"
                               "  20010db8000000000000000000000001"
                               "  00000000000000000000000000000001"
                               "| 0ed6 0daf 0008 0000";

// Ethernet, label 400 (bottom), then bytes that are not IP.
const char *const kNoIpFrame = "000000000002 000000000001 8847"
                               "| 001901ff | 0000 0000 0000 0000";

IpGenAddr addr(const char *text) { return *IpGenAddr::fromString(text); }

Orv::Ptr<const PacketTracer::Result> forwarded() {
  return Orv::make<const PacketTracer::Result>(
      PacketTracer::Result::Verdict::forwarded, Wirx::IntfId("Ethernet2"),
      std::vector<Wirx::MplsLabelEntry>{});
}

class PlatformProbeSmTest : public ::testing::Test {
protected:
  // Enters probe `id` with its addresses and packet already in place, as a
  // configuration change inside an entered probe is not followed.
  Orv::Ptr<ClientConfig> addProbe(Orv::U32 id,
                                  const std::vector<const char *> &addrs,
                                  const char *frame = kIpv4Frame) {
    auto probe = Orv::make<ClientConfig>(id);
    probe->ingressIntfIs(Wirx::IntfId("Ethernet1"));
    probe->pktIs(std::make_shared<const MplsUtils::EthPktParser>(
        LspPingTest::pktOf(LspPingTest::hexBytes(frame))));
    for (const char *a : addrs) {
      probe->addrIs(addr(a));
    }
    config->clientIs(probe);
    return probe;
  }

  const PacketTracer::Request &filed(Orv::U32 number) const {
    const auto *request = ptConfig->request().find(RequestId(kName, number));
    EXPECT_NE(request, nullptr) << "no request " << number;
    static const PacketTracer::Request none;
    return request ? *request : none;
  }

  void traced(Orv::U32 number) {
    ptStatus->resultIs(RequestId(kName, number), forwarded());
  }

  Orv::Ptr<Config> config = Orv::make<Config>();
  Orv::Ptr<Status> status = Orv::make<Status>();
  Orv::Ptr<PacketTracer::ClientConfig> ptConfig =
      Orv::make<PacketTracer::ClientConfig>();
  Orv::Ptr<PacketTracer::ClientStatus> ptStatus =
      Orv::make<PacketTracer::ClientStatus>();
  Orv::Ptr<ProbeSm> sm = ProbeSmIs(config, status, ptConfig, ptStatus, kName);
};

TEST_F(PlatformProbeSmTest, ThreeAddressesFileConsecutiveRequests) {
  addProbe(7, {"10.1.0.3", "10.1.0.1", "10.1.0.2"});

  auto probeStatus = status->client(7);
  ASSERT_TRUE(probeStatus);
  EXPECT_EQ(probeStatus->request()[addr("10.1.0.1")], 0u);
  EXPECT_EQ(probeStatus->request()[addr("10.1.0.2")], 1u);
  EXPECT_EQ(probeStatus->request()[addr("10.1.0.3")], 2u);
  EXPECT_EQ(ptConfig->request().size(), 3u);
  EXPECT_EQ(sm->packetTracerClientId(), 3u);

  const PacketTracer::Request &first = filed(0);
  EXPECT_EQ(first.ingressIntf(), Wirx::IntfId("Ethernet1"));
  EXPECT_EQ(first.l2Header().dstMac,
            *Wirx::EthAddr::fromString("00:00:00:00:00:02"));
  EXPECT_EQ(first.l2Header().srcMac,
            *Wirx::EthAddr::fromString("00:00:00:00:00:01"));
  EXPECT_EQ(first.l2Header().etherType, 0x8847);
  ASSERT_EQ(first.numMplsLabels(), 2);
  EXPECT_EQ(first.mplsLabel(0).label(), Wirx::MplsLabel(100));
  EXPECT_FALSE(first.mplsLabel(0).bos());
  EXPECT_EQ(first.mplsLabel(1).label(), Wirx::MplsLabel(200));
  EXPECT_TRUE(first.mplsLabel(1).bos());
  EXPECT_EQ(first.mplsLabel(1).ttl(), 255);
  ASSERT_TRUE(first.hasInnerL3Header());
  const PacketTracer::L3Header &l3 = first.innerL3Header();
  EXPECT_EQ(l3.af(), Wirx::AddrFamily::ipv4);
  EXPECT_EQ(l3.srcIp(), addr("10.0.0.1"));
  EXPECT_EQ(l3.dstIp(), addr("10.1.0.1"));
  EXPECT_EQ(l3.protocol(), Wirx::IpProto(17));
  EXPECT_EQ(l3.ttl(), Wirx::IpTtl(64));

  // The other filings are the same request with another destination.
  for (Orv::U32 n : {1u, 2u}) {
    PacketTracer::Request expected = first;
    PacketTracer::L3Header inner = first.innerL3Header();
    inner.dstIpExternalIs(n == 1 ? addr("10.1.0.2") : addr("10.1.0.3"));
    expected.innerL3HeaderIs(inner);
    EXPECT_EQ(filed(n), expected) << n;
  }

  traced(2);
  traced(0);
  EXPECT_FALSE(probeStatus->complete());
  traced(1);
  EXPECT_TRUE(probeStatus->complete());
  EXPECT_EQ(probeStatus->result().size(), 3u);
  EXPECT_EQ(probeStatus->result()[1], ptStatus->result(RequestId(kName, 1)));
}

TEST_F(PlatformProbeSmTest, WithdrawnResultClearsComplete) {
  addProbe(1, {"10.1.0.1", "10.1.0.2"});
  traced(0);
  traced(1);
  auto probeStatus = status->client(1);
  ASSERT_TRUE(probeStatus->complete());

  ptStatus->resultDel(RequestId(kName, 0));
  EXPECT_FALSE(probeStatus->complete());
  EXPECT_FALSE(probeStatus->result().contains(0));
  EXPECT_TRUE(probeStatus->result().contains(1));

  traced(0);
  EXPECT_TRUE(probeStatus->complete());
}

TEST_F(PlatformProbeSmTest, DeletingOneProbeStrandsTheResultsOfAnother) {
  addProbe(1, {"10.1.0.1"});
  addProbe(2, {"10.2.0.1", "10.2.0.2"});
  ASSERT_EQ(sm->tracerClientIdToProbeId().size(), 3u);

  config->clientDel(1);
  EXPECT_FALSE(status->client().contains(1));
  EXPECT_FALSE(ptConfig->request().contains(RequestId(kName, 0)));
  EXPECT_TRUE(ptConfig->request().contains(RequestId(kName, 1)));
  EXPECT_TRUE(ptConfig->request().contains(RequestId(kName, 2)));
  EXPECT_TRUE(sm->tracerClientIdToProbeId().empty());

  // Probe 2's results are now looked up under probe 0: with no probe 0 they
  // are dropped.
  traced(1);
  traced(2);
  auto probe2 = status->client(2);
  EXPECT_TRUE(probe2->result().empty());
  EXPECT_FALSE(probe2->complete());

  // With a probe 0 they land in its status instead.
  addProbe(0, {"10.0.9.9"});
  ptStatus->resultDel(RequestId(kName, 1));
  traced(1);
  EXPECT_TRUE(probe2->result().empty());
  EXPECT_TRUE(status->client(0)->result().contains(1));
}

TEST_F(PlatformProbeSmTest, TemplateWithoutIpHeaderIsFiledWithoutInnerHeader) {
  addProbe(1, {"10.1.0.1"}, kNoIpFrame);
  const PacketTracer::Request &request = filed(0);
  EXPECT_FALSE(request.hasInnerL3Header());
  ASSERT_EQ(request.numMplsLabels(), 1);
  EXPECT_EQ(request.mplsLabel(0).label(), Wirx::MplsLabel(400));
  EXPECT_EQ(request.l2Header().etherType, 0x8847);
}

TEST_F(PlatformProbeSmTest, Ipv6TemplateCarriesItsHeaderFields) {
  addProbe(1, {"2001:db8::9"}, kIpv6Frame);
  const PacketTracer::Request &request = filed(0);
  ASSERT_TRUE(request.hasInnerL3Header());
  const PacketTracer::L3Header &l3 = request.innerL3Header();
  EXPECT_EQ(l3.srcIp(), addr("2001:db8::1"));
  EXPECT_EQ(l3.dstIp(), addr("2001:db8::9"));
  EXPECT_EQ(l3.flowLabel(), Wirx::IpFlowLabel(0x12345));
  EXPECT_EQ(l3.hopLimit(), 1);
  EXPECT_EQ(l3.nextHeader(), 17);
}

TEST_F(PlatformProbeSmTest, ReaddedProbeGetsFreshNumbers) {
  addProbe(1, {"10.1.0.1", "10.1.0.2"});
  traced(0);
  config->clientDel(1);
  EXPECT_TRUE(ptConfig->request().empty());

  addProbe(1, {"10.1.0.1", "10.1.0.2"});
  auto probeStatus = status->client(1);
  EXPECT_EQ(probeStatus->request()[addr("10.1.0.1")], 2u);
  EXPECT_EQ(probeStatus->request()[addr("10.1.0.2")], 3u);
  EXPECT_TRUE(probeStatus->result().empty());
  EXPECT_TRUE(ptConfig->request().contains(RequestId(kName, 2)));
  EXPECT_TRUE(ptConfig->request().contains(RequestId(kName, 3)));
}

TEST_F(PlatformProbeSmTest, ChangesInsideAnEnteredProbeAreNotFollowed) {
  auto probe = addProbe(1, {"10.1.0.1"});
  probe->addrIs(addr("10.1.0.2"));
  EXPECT_EQ(ptConfig->request().size(), 1u);
  EXPECT_EQ(status->client(1)->request().size(), 1u);
}

// Followed by one stray double quote, as the runtime's mutators have it.
TEST_F(PlatformProbeSmTest, NullEntriesAreRefused) {
  EXPECT_EQ(TestSupport::thrownText<std::invalid_argument>(
                [&] { config->clientIs(nullptr); }),
            "null _client parameter to mutator for "
            "LspPing::PlatformProbe::Config::client not allowed\"");
  EXPECT_EQ(TestSupport::thrownText<std::invalid_argument>(
                [&] { status->clientIs(nullptr); }),
            "null _client parameter to mutator for "
            "LspPing::PlatformProbe::Status::client not allowed\"");
}

} // namespace
