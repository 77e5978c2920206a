// The echo requests of the transmit state machine, as an independent
// dissector reads them: for each tunnel type one client sends one request,
// written to a capture of its own, and the dissector must see an MPLS echo
// request with the Target FEC Stack sub-TLV of that tunnel type, right
// checksums, and nothing malformed or at error level. Skipped where tshark
// is not installed.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingClientConfig.h"
#include "LspPing/LspPingClientStatus.h"
#include "LspPing/LspPingClientTxSm.h"
#include "ToolTestSupport.h"
#include "Tshark.h"
#include "Wirx/MemPam.h"

namespace {

using LspPing::LspPingClientConfig;
using LspPing::LspPingTunnelType;
using LspPingTest::split;

constexpr Orv::U32 clientId = 7;
// 2027-01-15, an arbitrary fixed start for the virtual clock.
constexpr double start = 1'800'000'000.0;

struct TunnelCase {
  const char *name;
  LspPingTunnelType type;
  // What the client configures beyond the common settings.
  void (*configure)(LspPingClientConfig &config);
  // The FEC sub-TLV's type and length as the dissector shows them; both
  // empty when the stack has no sub-TLV.
  const char *fecType;
  const char *fecLength;
  // One more field, showing the value went where the dissector looks.
  const char *field;
  const char *value;
};

void nothingMore(LspPingClientConfig &) {}

// Where we differ from the public registry on purpose, as in the generated
// frames of the dissector cross-check: the segment-routing IPv4 sub-TLV is
// 0x7C00 (31744, not the registry's 34), which the dissector shows as
// undecoded value bytes, and the segment-routing lengths say 6 and 18,
// leaving out the two reserved bytes. An unknown tunnel is pinged as an LDP
// prefix of the destination address; raw and static tunnels name their top
// label in a Nil FEC; a pseudowire goes with an empty stack.
const TunnelCase tunnelCases[] = {
    {"unknown", LspPingTunnelType::tunnelUnknown, nothingMore, "1", "5",
     "mpls_echo.tlv.fec.ldp_ipv4", "127.0.0.1"},
    {"raw", LspPingTunnelType::tunnelModeRaw, nothingMore, "16", "4",
     "mpls_echo.tlv.fec.nil_label", "100"},
    {"static", LspPingTunnelType::tunnelStaticConfig, nothingMore, "16", "4",
     "mpls_echo.tlv.fec.nil_label", "100"},
    {"ldp-ipv4", LspPingTunnelType::tunnelLdpIpv4, nothingMore, "1", "5",
     "mpls_echo.tlv.fec.ldp_ipv4", "10.1.1.1"},
    {"rsvp-ipv4", LspPingTunnelType::tunnelRsvpIpv4,
     [](LspPingClientConfig &config) {
       config.rsvpSpIdIs(
           Rsvp::RsvpSpId{*Wirx::IpAddr::fromString("192.0.2.9"), 17,
                          *Wirx::IpAddr::fromString("192.0.2.1"), 5});
       config.rsvpSenderAddrIs(*Wirx::IpGenAddr::fromString("192.0.2.2"));
     },
     "3", "20", "mpls_echo.tlv.fec.rsvp_ipv4_ep", "192.0.2.9"},
    // 10.1.1.1, prefix length 32, IS-IS: the 6 bytes the length counts.
    {"sr-ipv4", LspPingTunnelType::tunnelSrIpv4, nothingMore, "31744", "6",
     "mpls_echo.tlv.fec.value", "0a0101012002"},
    {"sr-ipv6", LspPingTunnelType::tunnelSrIpv6,
     [](LspPingClientConfig &config) {
       config.srcIpAddrIs(*Wirx::IpGenAddr::fromString("2001:db8::1"));
       config.dstIpAddrIs(*Wirx::IpGenAddr::fromString("::ffff:127.0.0.1"));
       config.dstPrefixIs(*Wirx::IpGenPrefix::fromString("2001:db8::9/128"));
     },
     "35", "18", "mpls_echo.tlv.fec.igp_ipv6", "2001:db8::9"},
    {"pseudowire", LspPingTunnelType::tunnelPwLdp, nothingMore, "", "",
     "mpls_echo.tlv.len", "0"},
};

// The frames one client sends when enabled for a single request: the
// common settings are those of the reference request, sender
// 02:00:00:00:00:01 / 10.0.0.1 to 02:00:00:00:00:02 / 127.0.0.1 over label
// 100, for the prefix 10.1.1.1/32.
std::vector<Wirx::MemPam::Frame> sentFrames(const TunnelCase &tunnel) {
  auto wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time(wheel, start);
  auto config = LspPing::lspPingClientConfigFactory(clientId);
  auto status = LspPing::lspPingClientStatusFactory(clientId);
  auto txSm =
      LspPing::lspPingClientTxSmFactory(clientId, config, status, wheel);
  auto pam = Orv::make<Wirx::MemPam>("tx");
  txSm->lspPingClientTxPamIs(pam);

  config->srcEthAddrIs(*Wirx::EthAddr::fromString("02:00:00:00:00:01"));
  config->tunnelNexthopEthAddrIs(
      *Wirx::EthAddr::fromString("02:00:00:00:00:02"));
  config->srcIpAddrIs(*Wirx::IpGenAddr::fromString("10.0.0.1"));
  config->dstIpAddrIs(*Wirx::IpGenAddr::fromString("127.0.0.1"));
  config->srcUdpPortIs(49152);
  config->mplsLabelIs(0, Wirx::MplsLabel(100));
  config->mplsTtlIs(0, 255);
  config->dstPrefixIs(*Wirx::IpGenPrefix::fromString("10.1.1.1/32"));
  config->tunnelTypeIs(tunnel.type);
  tunnel.configure(*config);
  config->txCountIs(1);
  config->enabledIs(true);
  time.runFor(config->pktDelay() + 1);
  return pam->frames();
}

TEST(TxSmCapture, EachTunnelTypeIsReadAsItsFec) {
  if (!LspPingTest::tsharkInstalled()) {
    GTEST_SKIP() << "tshark is not installed";
  }
  const auto dir = std::filesystem::temp_directory_path() /
                   ("lspping-txsm-test-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  for (const TunnelCase &tunnel : tunnelCases) {
    SCOPED_TRACE(tunnel.name);
    const std::vector<Wirx::MemPam::Frame> frames = sentFrames(tunnel);
    ASSERT_EQ(frames.size(), 1u);
    const auto capture = dir / (std::string(tunnel.name) + ".pcap");
    LspPingTest::writeCapture(capture, frames,
                              static_cast<std::uint32_t>(start));
    std::vector<std::string> fields = {
        "_ws.col.Protocol",        "mpls_echo.msg_type",
        "mpls_echo.sender_handle", "mpls_echo.sequence",
        "mpls_echo.tlv.type",      "mpls_echo.tlv.fec.type",
        "mpls_echo.tlv.fec.len",   "ip.checksum.status",
        "udp.checksum.status",     tunnel.field};
    const std::size_t soundness = fields.size();
    fields.insert(fields.end(), LspPingTest::soundnessFields.begin(),
                  LspPingTest::soundnessFields.end());
    const std::vector<std::string> lines =
        LspPingTest::dissect(capture, fields);
    ASSERT_EQ(lines.size(), 1u);
    const std::vector<std::string> got = split(lines[0], ';');
    ASSERT_EQ(got.size(), fields.size()) << lines[0];
    EXPECT_EQ(got[0], "MPLS ECHO");
    EXPECT_EQ(got[1], "1") << "echo request";
    EXPECT_EQ(got[2], "0x00000007") << "the client's id";
    EXPECT_EQ(got[3], "1");
    EXPECT_EQ(got[4], "1") << "a Target FEC Stack, alone";
    EXPECT_EQ(got[5], tunnel.fecType);
    EXPECT_EQ(got[6], tunnel.fecLength);
    // IPv6 has no header checksum.
    const bool ipv6 = tunnel.type == LspPingTunnelType::tunnelSrIpv6;
    EXPECT_EQ(got[7], ipv6 ? "" : "1") << "IPv4 header checksum";
    EXPECT_EQ(got[8], "1") << "UDP checksum";
    EXPECT_EQ(got[9], tunnel.value) << tunnel.field;
    LspPingTest::expectSound(got[soundness], got[soundness + 1],
                             got[soundness + 2]);
  }
  std::filesystem::remove_all(dir);
}

} // namespace
