// examples/requests.pcap holds the echo requests that `lspping respond` is
// shown answering against the example routers (egress.json, transit.json,
// tilfa.json). They are built here with the library's packet generator, as
// the ping client builds them; run with LSPPING_UPDATE_EXAMPLES=1 to rewrite
// the file after changing them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "ExampleCaptures.h"
#include "LspPing/LspPingDownstreamLabelStack.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingTlvType.h"

namespace {

using LspPing::LspPingDownstreamSignalingProtocol;
using LspPingTest::Bytes;
using Orv::U16;
using Orv::U32;
using Orv::U8;

// NTP seconds of 2025-01-01, an arbitrary fixed send time.
constexpr U32 sentSeconds = 3944678400u;
constexpr U8 replyByUdp = 2;
constexpr U8 doNotReply = 1;

const Wirx::IpAddr client = *Wirx::IpAddr::fromString("10.0.0.1");
const Wirx::IpAddr egressLoopback = *Wirx::IpAddr::fromString("10.0.0.9");
const Wirx::IpAddr srNode = *Wirx::IpAddr::fromString("10.0.0.8");
const Wirx::IpAddr transitRouter = *Wirx::IpAddr::fromString("10.0.0.2");

// A request from the client at 10.0.0.1, sent to 127.0.0.1 with IP TTL 1
// and, when labelled, label TTL 1: a probe that ends at the first router
// that sees it. `tlvs` writes the Target FEC Stack and what follows it.
Bytes request(const std::vector<U32> &labels, U8 replyMode, U32 sequence,
              const std::function<void(LspPing::LspPingPktGen &)> &tlvs) {
  auto pkt = Wirx::Pkt::make();
  auto gen = LspPing::lspPingPktGenFactory(pkt);
  gen->initializedIs(true);
  gen->addEtherHdr(*Wirx::EthAddr::fromString("02:00:00:00:00:02"),
                   *Wirx::EthAddr::fromString("02:00:00:00:00:01"),
                   labels.empty() ? Wirx::EthHdr::etherTypeIpv4
                                  : Wirx::EthHdr::etherTypeMpls);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    gen->addMplsHdr(labels[i], 0, i + 1 == labels.size(), 1);
  }
  gen->addIpHdr(client, *Wirx::IpAddr::fromString("127.0.0.1"), 1,
                Wirx::Ipv4Hdr::protocolUdp);
  gen->addUdpHdr(49152, 3503);
  gen->addLspPingHdr(1, 0, 1, replyMode, 0, 0, 7, sequence, sentSeconds, 0, 0,
                     0);
  gen->addLspPingTlvHdr(U16(LspPing::LspPingTlvType::TargetFecStack), 0);
  tlvs(*gen);
  gen->computeHdrLenChecksum();
  return Bytes(pkt->data(), pkt->data() + pkt->frontBytes());
}

// What the client expects of the router it probes: 10.0.0.2, reached with
// `label`.
void downstreamMapping(LspPing::LspPingPktGen &gen, U32 label,
                       LspPingDownstreamSignalingProtocol protocol) {
  LspPing::LspPingDownstreamLabelStack stack;
  stack.labelEntryIs(0, LspPing::LspPingDownstreamLabelEntry::fromLabel(
                            Wirx::MplsLabel(label), 0, true, protocol));
  stack.size = 1;
  gen.addLspPingDownstreamMappingTlv(
      1500, LspPing::LspPingAddrType::ipv4Numbered, 0, transitRouter,
      transitRouter, LspPing::LspPingMultipathType::noMultipath, 0,
      Wirx::IpGenAddr(), LspPing::LspPingMultipathBitset(), stack);
}

std::vector<Bytes> exampleRequests() {
  return {
      // 1. LDP ping of the egress router's loopback, arrived unlabelled
      //    after penultimate-hop popping.
      request(
          {}, replyByUdp, 1,
          [](auto &gen) { gen.addLspPingLdpIpv4SubTlv(egressLoopback, 32); }),
      // 2. LDP traceroute probe switched by the transit router on label
      //    1000, asking where it goes next.
      request(
          {1000}, replyByUdp, 2,
          [](auto &gen) {
            gen.addLspPingLdpIpv4SubTlv(egressLoopback, 32);
            downstreamMapping(
                gen, 1000,
                LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolLdp);
          }),
      // 3. As 1, but asking for no reply: only UDP replies are sent.
      request(
          {}, doNotReply, 3,
          [](auto &gen) { gen.addLspPingLdpIpv4SubTlv(egressLoopback, 32); }),
      // 4. A Nil FEC on label 2222, which no router here has programmed.
      request({2222}, replyByUdp, 4,
              [](auto &gen) { gen.addLspPingNilFecSubTlv(2222); }),
      // 5. Segment-routing traceroute probe on prefix label 16008.
      request({16008}, replyByUdp, 5,
              [](auto &gen) {
                gen.addLspPingSrIpv4SubTlv(srNode, 32,
                                           LspPing::LspPingSrIgpProtocol::isis);
                downstreamMapping(gen, 16008,
                                  LspPingDownstreamSignalingProtocol::
                                      dsInfoSignalingProtocolIsis);
              }),
  };
}

std::filesystem::path examplePath() {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  return std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) / "examples" /
         "requests.pcap";
}

TEST(ExampleRequests, CommittedFileMatchesItsSource) {
  const Bytes expected =
      LspPingTest::pcapFile({"requests.pcap", exampleRequests()});
  const char *update = std::getenv("LSPPING_UPDATE_EXAMPLES");
  if (update != nullptr && std::string(update) == "1") {
    std::ofstream out(examplePath(), std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char *>(expected.data()),
              static_cast<std::streamsize>(expected.size()));
    ASSERT_TRUE(out.good()) << "cannot write " << examplePath();
    return;
  }
  std::ifstream in(examplePath(), std::ios::binary);
  EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(in), {}), expected)
      << examplePath() << " differs from what ExampleRequestsTest.cpp builds; "
      << "rerun with LSPPING_UPDATE_EXAMPLES=1 if the change is intended";
}

} // namespace
