// The LSPs `lspping ping` and `trace` read from their words, on the
// command line and in a FEC file: each kind of FEC, what the options make
// of it, and the one line that names what is wrong.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "ToolTestSupport.h"
#include "tools/Lsp.h"

namespace {

using LspPing::LspPingTunnelType;
using LspPingTool::LspWords;

// The words of a command line, parsed as the subcommands parse theirs.
LspWords wordsOf(std::vector<std::string> args) {
  LspWords words;
  CLI::App app;
  LspPingTool::addLspOptions(app, words);
  std::reverse(args.begin(), args.end());
  app.parse(args);
  return words;
}

std::string labelsOf(const LspPingTool::Lsp &lsp) {
  std::string text;
  for (std::size_t i = 0; i < lsp.target.labels.size(); ++i) {
    text += (i ? " " : "") + lsp.target.labels[i].stringValue() + "/" +
            std::to_string(lsp.ttls[i]);
  }
  return text;
}

TEST(Lsp, EachKindOfFec) {
  struct Case {
    std::vector<std::string> args;
    LspPingTunnelType type;
    std::string fec;
    std::string toward;
    std::string labels;
    Wirx::AddrFamily family = Wirx::AddrFamily::ipv4;
  };
  const Case cases[] = {
      {{"ldp", "10.0.0.9/32", "--label", "1004", "--label", "20/ttl=1"},
       LspPingTunnelType::tunnelLdpIpv4,
       "ldp=10.0.0.9/32",
       "10.0.0.9",
       "1004/255 20/1"},
      {{"sr", "2001:db8::9/128", "--label", "16009", "--igp", "isis"},
       LspPingTunnelType::tunnelSrIpv6,
       "sr=2001:db8::9/128",
       "2001:db8::9",
       "16009/255",
       Wirx::AddrFamily::ipv6},
      {{"sr", "10.0.0.9/32"},
       LspPingTunnelType::tunnelSrIpv4,
       "sr=10.0.0.9/32",
       "10.0.0.9",
       ""},
      {{"rsvp", "10.0.0.9", "7", "--lsp-id", "3", "--label", "300"},
       LspPingTunnelType::tunnelRsvpIpv4,
       "rsvp=10.0.0.9,7",
       "10.0.0.9",
       "300/255"},
      {{"pw", "10.0.0.1", "10.0.0.9", "100", "--label", "500"},
       LspPingTunnelType::tunnelPwLdp,
       "pw=10.0.0.1,10.0.0.9,100",
       "10.0.0.9",
       "500/255"},
      {{"static", "10.0.0.0/24", "--label", "77"},
       LspPingTunnelType::tunnelStaticConfig,
       "static=10.0.0.0/24",
       "10.0.0.0",
       "77/255"},
      {{"nil", "--label", "16", "-I", "e1", "--nexthop", "2001:db8::2"},
       LspPingTunnelType::tunnelModeRaw,
       "nil=16",
       "unspecified",
       "16/255",
       Wirx::AddrFamily::ipv6},
      // The source decides the requests' family, not the FEC.
      {{"sr", "2001:db8::9/128", "-s", "10.0.0.1"},
       LspPingTunnelType::tunnelSrIpv6,
       "sr=2001:db8::9/128",
       "2001:db8::9",
       ""},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.fec);
    std::string error;
    const auto lsp = LspPingTool::lspOf(wordsOf(c.args), error);
    ASSERT_TRUE(lsp) << error;
    EXPECT_EQ(lsp->target.tunnelType, c.type);
    EXPECT_EQ(lsp->fec, c.fec);
    EXPECT_EQ(lsp->toward.stringValue(), c.toward);
    EXPECT_EQ(labelsOf(*lsp), c.labels);
    EXPECT_EQ(lsp->family, c.family);
  }
}

TEST(Lsp, WhatTheOptionsSetBesideTheFec) {
  std::string error;
  const auto rsvp = LspPingTool::lspOf(
      wordsOf({"rsvp", "10.0.0.9", "7", "--lsp-id", "3", "--ext-tunnel-id",
               "10.0.0.1", "--sender", "10.0.0.2", "--tc", "5", "--nexthop-mac",
               "02:00:00:00:00:09"}),
      error);
  ASSERT_TRUE(rsvp) << error;
  EXPECT_EQ(rsvp->target.rsvp.tunnelDst.stringValue(), "10.0.0.9");
  EXPECT_EQ(rsvp->target.rsvp.tunnelId, 7);
  EXPECT_EQ(rsvp->target.rsvp.lspId, 3);
  EXPECT_EQ(rsvp->target.rsvp.extendedTunnelId.stringValue(), "10.0.0.1");
  EXPECT_EQ(rsvp->target.rsvpSender.stringValue(), "10.0.0.2");
  EXPECT_EQ(rsvp->target.tc, 5);
  EXPECT_EQ(rsvp->target.nexthopEthAddr.stringValue(), "02:00:00:00:00:09");
  EXPECT_FALSE(rsvp->ttlsSet);

  const auto pw =
      LspPingTool::lspOf(wordsOf({"pw", "10.0.0.1", "10.0.0.9", "100",
                                  "--pw-type", "4", "--label", "500"}),
                         error);
  ASSERT_TRUE(pw) << error;
  EXPECT_EQ(pw->target.pw,
            LspPing::LspPingPwInfo(Wirx::IpAddr(0x0a000001),
                                   Wirx::IpAddr(0x0a000009), 100, 4));
}

TEST(Lsp, AMistakeIsOneLineNamingTheWordOrOption) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{}, "FEC is missing: ldp, rsvp, sr, nil, static or pw"},
      {{"bgp", "10.0.0.9/32"},
       "FEC bgp: expected ldp, rsvp, sr, nil, static or pw"},
      {{"ldp"}, "ldp: expected one prefix"},
      {{"ldp", "10.0.0.9"}, "ldp 10.0.0.9: not a prefix (ADDRESS/LENGTH)"},
      {{"ldp", "2001:db8::9/128"}, "ldp 2001:db8::9/128: an LDP FEC is IPv4"},
      {{"rsvp", "2001:db8::9", "7"}, "rsvp 2001:db8::9: not an IPv4 address"},
      {{"rsvp", "10.0.0.9", "65536"},
       "rsvp 65536: not a tunnel id (0 to 65535)"},
      {{"pw", "10.0.0.1", "2001:db8::9", "1", "--label", "5"},
       "pw 10.0.0.1 2001:db8::9: sender and receiver of one family"},
      {{"pw", "10.0.0.1", "10.0.0.9", "1"},
       "pw: needs --label: the pseudowire's label"},
      {{"nil", "--label", "16"},
       "nil: needs -I and --nexthop or --nexthop-mac: a Nil FEC has no "
       "address to find a route to"},
      {{"ldp", "10.0.0.9/32", "--label", "1048576"},
       "--label 1048576: expected LABEL[/ttl=N], a label of 0 to 1048575 and "
       "a TTL of 0 to 255"},
      {{"ldp", "10.0.0.9/32", "--label", "16/tc=3"},
       "--label 16/tc=3: expected LABEL[/ttl=N], a label of 0 to 1048575 and "
       "a TTL of 0 to 255"},
      {{"ldp", "10.0.0.9/32", "--nexthop-mac", "02:00"},
       "--nexthop-mac 02:00: not a MAC address"},
      {{"ldp", "10.0.0.9/32", "--tc", "8"}, "--tc 8: not 0 to 7"},
      {{"ldp", "10.0.0.9/32", "-s", "10.0.0.1", "--destination", "::1"},
       "--destination ::1: not of -s 10.0.0.1's family"},
      {{"ldp", "10.0.0.9/32", "--nexthop", "2001:db8::2"},
       "--nexthop 2001:db8::2: not IPv4, the requests' family"},
      {{"ldp", "10.0.0.9/32", "--pw-type", "4"},
       "--pw-type: only with pw FECs"},
      {{"sr", "10.0.0.9/32", "--igp", "ospf"},
       "--igp ospf: the client names IS-IS in every segment-routing FEC; "
       "OSPF is not supported"},
  };
  for (const auto &[args, message] : cases) {
    std::string error;
    EXPECT_FALSE(LspPingTool::lspOf(wordsOf(args), error));
    EXPECT_EQ(error, message);
  }
}

class FecFile : public LspPingTest::ScratchDirTest {
protected:
  FecFile() : ScratchDirTest("lspping-fec-file-test-") {}

  std::string write(const std::string &text) {
    const std::string file = path("lsps.txt").string();
    std::ofstream(file) << text;
    return file;
  }
};

// Options the command line gives apply to the lines that leave them out.
TEST_F(FecFile, ALineEachCommentsSkippedDefaultsTaken) {
  const std::string file = write("# to pe2\n"
                                 "ldp 10.0.0.9/32 --label 1004   # LDP\n"
                                 "\n"
                                 "sr 10.0.0.9/32 --label 16009 -I e2\n");
  LspWords defaults;
  defaults.intf = "e1";
  defaults.tc = 3;
  std::string error;
  const auto lsps = LspPingTool::readFecFile(file, defaults, error);
  ASSERT_TRUE(lsps) << error;
  ASSERT_EQ(lsps->size(), 2u);
  EXPECT_EQ((*lsps)[0].line, 2u);
  EXPECT_EQ((*lsps)[0].fec, "ldp=10.0.0.9/32");
  EXPECT_EQ((*lsps)[0].target.intf.name(), "e1");
  EXPECT_EQ((*lsps)[0].target.tc, 3);
  EXPECT_EQ((*lsps)[1].line, 4u);
  EXPECT_EQ((*lsps)[1].target.intf.name(), "e2");
}

TEST_F(FecFile, AMistakeNamesTheFileAndLine) {
  const std::pair<std::string, std::string> cases[] = {
      {"ldp 10.0.0.9/32\nldp 10.0.0.8/32 -c 3\n",
       ":2: The following argument was not expected: -c"},
      {"ldp 10.0.0.9/32 --label x\n", ":1: --label x: expected LABEL[/ttl=N]"},
      {"# nothing\n", ": no LSP in the file"},
  };
  for (const auto &[text, message] : cases) {
    const std::string file = write(text);
    std::string error;
    EXPECT_FALSE(LspPingTool::readFecFile(file, LspWords(), error));
    EXPECT_EQ(error.rfind(file + message, 0), 0u) << error;
  }
  std::string error;
  EXPECT_FALSE(
      LspPingTool::readFecFile(path("none.txt").string(), LspWords(), error));
  EXPECT_EQ(error, path("none.txt").string() + ": No such file or directory");
}

} // namespace
