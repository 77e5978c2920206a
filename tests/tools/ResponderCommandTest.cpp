// `lspping responder` end to end, in two namespaces joined by a veth: a
// client namespace sends requests crafted by `lspping craft` on a raw
// socket and reads the replies on UDP sockets; the daemon answers in the
// router's namespace from a state file it reloads.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <csignal>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "LspPing/LspPingHdr.h"
#include "Netns.h"
#include "RunProgram.h"
#include "ToolTestSupport.h"
#include "Wirx/LinuxRawPam.h"
#include "Wirx/LinuxUdpPam.h"
#include "tools/Pcap.h"

namespace {

using nlohmann::json;

const std::string clientMac = "02:00:00:00:0c:01";
const std::string routerMac = "02:00:00:00:0d:01";

// The router answers as egress of 10.0.0.9 and 2001:db8::9 and switches
// label 1000 for 10.0.0.8 to its neighbour.
std::string stateFile(const std::string &intf, bool egressOf9) {
  const std::string ldp9 =
      egressOf9 ? R"({ "fec": "10.0.0.9/32", "labels": [ { "label": 3 } ] },)"
                : "";
  return R"({
  "bindings": {
    "ldp": [ )" +
         ldp9 + R"(
      { "fec": "10.0.0.8/32", "labels": [ { "label": 1000 } ] } ],
    "isisV6": [ { "fec": "2001:db8::9/128", "labels": [ { "label": 3 } ] } ]
  },
  "lfib": {
    "routes": [ { "label": 1000, "viaSet": 1, "source": "ldp" } ],
    "viaSets": [ { "key": 1, "type": "mpls", "vias": [ 10 ] } ],
    "vias": [ { "key": 10, "interface": ")" +
         intf + R"(", "nexthop": "10.0.0.1",
                "action": "swap", "labels": [ 2000 ] } ]
  },
  "hardware": [ { "label": 1000, "state": "programmed" } ]
})";
}

class ResponderCommand : public LspPingTest::ScratchDirTest {
protected:
  ResponderCommand() : ScratchDirTest("lspping-responder-test-") {}

  void SetUp() override {
    LSPPING_NEED_NETNS();
    ScratchDirTest::SetUp();
    client_ = std::make_unique<LspPingTest::Netns>();
    router_ = std::make_unique<LspPingTest::Netns>();
    ASSERT_TRUE(client_->ip({"link", "add", clientIntf_, "address", clientMac,
                             "type", "veth", "peer", "name", routerIntf_,
                             "address", routerMac, "netns", router_->name()}));
    for (const auto &[netns, intf, host] :
         {std::tuple{client_.get(), clientIntf_, "1"},
          std::tuple{router_.get(), routerIntf_, "2"}}) {
      ASSERT_TRUE(netns->ip(
          {"addr", "add", std::string("10.0.0.") + host + "/24", "dev", intf}));
      ASSERT_TRUE(
          netns->ip({"addr", "add", std::string("2001:db8::") + host + "/64",
                     "dev", intf, "nodad"}));
      ASSERT_TRUE(netns->ip({"link", "set", intf, "up"}));
    }
    std::string error;
    {
      const LspPingTest::NetnsScope in(*client_);
      tx_ = Wirx::LinuxRawPam::open(loop_, clientIntf_, 3503, error);
      rx4_ =
          Wirx::LinuxUdpPam::open(loop_, Wirx::AddrFamily::ipv4, 49152, error);
      rx6_ =
          Wirx::LinuxUdpPam::open(loop_, Wirx::AddrFamily::ipv6, 49152, error);
    }
    ASSERT_TRUE(tx_ && rx4_ && rx6_) << error;
    writeState(stateFile(routerIntf_, true));
  }

  void writeState(const std::string &text) const {
    std::ofstream(path("router.json")) << text;
  }

  // The frame `lspping craft ARGS` writes, to the router's MAC.
  std::vector<Orv::U8> crafted(const std::string &args) const {
    const std::string file = path("request.pcap").string();
    const auto run = LspPingTest::runLspping(
        "craft --src-mac " + clientMac + " --dst-mac " + routerMac + " " +
        args + " " + LspPingTest::quoted(file));
    EXPECT_EQ(run.status, 0) << args;
    LspPingTool::PcapReader reader(file);
    std::span<const std::uint8_t> frame;
    EXPECT_TRUE(reader.next(frame)) << reader.error();
    return {frame.begin(), frame.end()};
  }

  // Sends the frame and returns the daemon's event for it.
  json exchange(const std::vector<Orv::U8> &frame) {
    tx_->txPktIs(Wirx::Pkt::copyOf(frame.data(), Orv::U32(frame.size())));
    const auto line = daemon_->line(0);
    return line ? json::parse(*line) : json();
  }

  // The return code of the next reply to reach the client, or -1.
  int replyCode() {
    Orv::Ptr<Wirx::Pkt> reply;
    LspPingTest::runUntil(loop_, [&] {
      return !!(reply = rx4_->rxPkt()) || !!(reply = rx6_->rxPkt());
    });
    if (!reply || reply->frontBytes() < sizeof(LspPing::LspPingHdr)) {
      return -1;
    }
    LspPing::LspPingHdr hdr;
    std::memcpy(&hdr, reply->data(), sizeof hdr);
    return hdr.returnCode;
  }

  void reload(const std::string &text, const std::string &logged) {
    writeState(text);
    daemon_->signal(SIGHUP);
    const auto line = daemon_->lineWith(1, "reload");
    ASSERT_TRUE(line);
    EXPECT_NE(line->find(logged), std::string::npos) << *line;
  }

  Kiv::EventLoop loop_;
  std::unique_ptr<LspPingTest::Netns> client_, router_;
  const std::string clientIntf_ = LspPingTest::uniqueName("vc");
  const std::string routerIntf_ = LspPingTest::uniqueName("vr");
  Orv::Ptr<Wirx::LinuxRawPam> tx_;
  Orv::Ptr<Wirx::LinuxUdpPam> rx4_, rx6_;
  std::unique_ptr<LspPingTest::NetnsProcess> daemon_;
};

TEST_F(ResponderCommand, AnswersFromTheStateFileAndReloadsIt) {
  daemon_ = std::make_unique<LspPingTest::NetnsProcess>(
      *router_,
      std::vector<std::string>{LSPPING_PROGRAM, "responder", "--state",
                               path("router.json").string(), "--json"});
  ASSERT_TRUE(daemon_->started());
  const auto ready = daemon_->line(1);
  ASSERT_TRUE(ready);
  EXPECT_EQ(*ready, "lspping responder: answering on " + routerIntf_);

  const std::string ldp9 = "--fec ldp=10.0.0.9/32 ";
  const auto egress = crafted(ldp9 + "--src 10.0.0.1");
  const struct {
    std::string craft;
    // The return code, or the drop's counter.
    json outcome;
  } cases[] = {
      // Popped by the previous hop: this router is asked as egress.
      {ldp9 + "--src 10.0.0.1", 3},
      {"--fec ldp=10.0.0.8/32 --src 10.0.0.1 --label 1000/ttl=1 --ds-map "
       "10.0.0.2 --ds-label 1000",
       8},
      {ldp9 + "--src 10.0.0.1 --label 1000/ttl=1", 10},
      {"--fec ldp=10.0.0.7/32 --src 10.0.0.1", 4},
      {"--fec sr=2001:db8::9/128 --src 2001:db8::1", 3},
      {ldp9 + "--src 10.0.0.1 --label 1000/ttl=9", "in transit"},
      {ldp9 + "--src 10.0.0.1 --label 1000/ttl=1 --dst-port 7",
       "not to UDP port 3503"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.craft);
    const json event = exchange(crafted(c.craft));
    if (c.outcome.is_number()) {
      EXPECT_EQ(event["event"], "reply") << event;
      EXPECT_EQ(event["returnCode"], c.outcome) << event;
      EXPECT_EQ(replyCode(), c.outcome);
    } else {
      EXPECT_EQ(event["event"], "drop") << event;
      EXPECT_EQ(event["counter"], c.outcome) << event;
    }
  }
  // A frame cut short is dropped with the reason of what read it.
  const json cut = exchange({egress.begin(), egress.end() - 30});
  EXPECT_EQ(cut["event"], "drop") << cut;

  reload("{ \"lfib\": ", "reload refused, the old state stays: ");
  EXPECT_EQ(exchange(egress)["returnCode"], 3);
  EXPECT_EQ(replyCode(), 3);
  reload(stateFile(routerIntf_, false), "reloaded ");
  EXPECT_EQ(exchange(egress)["returnCode"], 4);
  EXPECT_EQ(replyCode(), 4);

  daemon_->signal(SIGTERM);
  const auto counters = daemon_->lineWith(0, "\"counters\"");
  ASSERT_TRUE(counters);
  const json total = json::parse(*counters);
  EXPECT_EQ(total["received"], 10) << total;
  EXPECT_EQ(total["replied"], 7) << total;
  EXPECT_EQ(total["received"], total["replied"].get<int>() +
                                   total["rateLimited"].get<int>() +
                                   total["dropped"].get<int>());
  EXPECT_EQ(daemon_->exitStatus(), 0);
}

} // namespace
