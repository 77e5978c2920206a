// Pings through the five routers of a TraceLab, and what the client side
// reads its replies through.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingHdr.h"
#include "Netsim/SessionHost.h"
#include "Netsim/TraceLab.h"
#include "Session/Format.h"
#include "Session/PingSession.h"
#include "Session/TraceSession.h"
#include "Wirx/MemUdpPam.h"

namespace {

using Session::PingSession;

struct Net {
  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, 1'800'000'000.0};
  Netsim::Network network{wheel};
  Netsim::TraceLab lab{network, 1.0 / 64};
  Netsim::SessionHost host{lab.pe1};
};

Session::Target fecTarget(Orv::U32 fec = 0x0a000005) {
  Session::Target target;
  target.fec = Wirx::IpGenPrefix(Wirx::IpAddr(fec), 32);
  return target;
}

// Three requests a second apart; p2's link to pe2 goes down after the first
// reply, so the other two are lost, each reported once its time-out is up.
TEST(PingSession, RepliesAndLostRequestsAreReportedInTurn) {
  Net net;
  std::vector<std::string> events;
  PingSession::Options options;
  options.count = 3;
  PingSession::Events handlers;
  handlers.reply = [&](const Session::Reply &reply) {
    events.push_back(std::to_string(reply.seq) + " " +
                     reply.from.stringValue() + " " +
                     Session::codeText(reply.code, reply.subcode) + " " +
                     Session::msText(reply.roundTrip));
  };
  handlers.timeout = [&](Orv::U32 seq) {
    events.push_back(std::to_string(seq) + " lost at +" +
                     std::to_string(int(net.time.now() - 1'800'000'000.0)) +
                     " s");
  };
  PingSession::Summary summary;
  handlers.done = [&](const PingSession::Summary &s) {
    summary = s;
    events.push_back("done");
  };
  PingSession ping(net.host, 7, fecTarget(), options, handlers);
  net.time.runFor(0.5);
  net.lab.p2pe2.upIs(false);
  net.time.runFor(10);
  EXPECT_EQ(events, (std::vector<std::string>{
                        "1 10.0.0.5 repRouterEgress(3/1) 93.750",
                        "2 lost at +3 s", "3 lost at +4 s", "done"}));
  EXPECT_EQ(summary.error, "");
  EXPECT_EQ(summary.sent, 3u);
  EXPECT_EQ(summary.received, 1u);
  EXPECT_EQ(summary.avgRoundTrip(), 93'750u);
  EXPECT_EQ(net.lab.pe1.clientConfigs()->pingClientConfig(7), nullptr)
      << "the client goes with the session's end";
}

// Neither kind of session starts without a way to send; each says why.
TEST(Sessions, WithoutAPathTheyEndWithTheReason) {
  struct Case {
    const char *name;
    Session::Target target;
    std::function<void(Net &)> setUp;
    std::string error;
  };
  Session::Target unknownIntf = fecTarget();
  unknownIntf.labels = {Wirx::MplsLabel(1005)};
  unknownIntf.intf = Wirx::IntfId("Ethernet9");
  Session::Target wideLabel = unknownIntf;
  wideLabel.labels = {Wirx::MplsLabel(Wirx::MplsLabel::null)};
  wideLabel.intf = Wirx::IntfId("Ethernet1");
  const Case cases[] = {
      {"no route", fecTarget(0x0a000009), [](Net &) {},
       "pe1: no route to 10.0.0.9/32"},
      {"no interface", unknownIntf, [](Net &) {},
       "pe1: Ethernet9: no such interface"},
      {"label too wide", wideLabel, [](Net &) {},
       "label none does not fit 20 bits"},
      {"interface without address", fecTarget(),
       [](Net &net) {
         net.lab.pe1.intfAddrDel(Wirx::IntfId("Ethernet1"),
                                 Wirx::IpAddr(0x0a010101));
       },
       "Transmit Interface is not ready"},
  };
  for (const Case &test : cases) {
    Net net;
    test.setUp(net);
    std::string pingError = "not done";
    std::string traceError = "not done";
    PingSession ping(
        net.host, 1, test.target, PingSession::Options(),
        {{}, {}, [&](const PingSession::Summary &s) { pingError = s.error; }});
    Session::TraceSession trace(
        net.host, 2, test.target, Session::TraceSession::Options(),
        {{}, [&](const Session::Trace &t) { traceError = t.error; }});
    net.time.runFor(1);
    EXPECT_EQ(pingError, test.error) << test.name;
    EXPECT_EQ(traceError, test.error) << test.name;
  }
}

// The tap passes everything through both ways, and keeps the subcode of
// each reply read through it.
TEST(ReplyTap, PassesThroughAndNotesReplySubcodes) {
  auto module = Orv::make<Wirx::MemUdpPam>("client", 49152);
  auto tap = Orv::make<Session::ReplyTap>(module);
  EXPECT_EQ(tap->port(), 49152);
  EXPECT_EQ(tap->writableCount(), module->writableCount());

  const auto message = [](Orv::U8 type, Orv::U32 handle, Orv::U32 seq,
                          Orv::U8 subcode, Orv::U32 bytes) {
    LspPing::LspPingHdr hdr;
    hdr.messageType = type;
    hdr.returnSubcode = subcode;
    hdr.senderHandleNbo.valueIs(handle);
    hdr.sequenceNumberNbo.valueIs(seq);
    return Wirx::Pkt::copyOf(reinterpret_cast<const Orv::U8 *>(&hdr), bytes);
  };
  const Wirx::IpGenAddr from(Wirx::IpAddr(0x0a000005));
  module->rxPktIs(from, 3503, message(2, 7, 9, 4, sizeof(LspPing::LspPingHdr)));
  module->rxPktIs(from, 3503,
                  message(1, 7, 10, 5, sizeof(LspPing::LspPingHdr)));
  module->rxPktIs(from, 3503, message(2, 7, 11, 6, 20));
  EXPECT_EQ(tap->readableCount(), 3u);
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(tap->rxPkt());
    EXPECT_EQ(tap->rxSrcAddr(), from);
    EXPECT_EQ(tap->rxSrcPort(), 3503);
  }
  EXPECT_FALSE(tap->rxPkt());
  EXPECT_EQ(tap->returnSubcode(7, 9), Orv::U8(4));
  EXPECT_EQ(tap->returnSubcode(7, 10), std::nullopt) << "a request";
  EXPECT_EQ(tap->returnSubcode(7, 11), std::nullopt) << "cut short";
  EXPECT_EQ(tap->returnSubcode(8, 9), std::nullopt);

  tap->txDstAddrIs(from);
  tap->txDstPortIs(3503);
  tap->txPktIs(message(1, 1, 1, 0, 8));
  ASSERT_EQ(module->datagrams().size(), 1u);
  EXPECT_EQ(module->datagrams()[0].dstAddr, from);
  EXPECT_EQ(module->datagrams()[0].payload.size(), 8u);
}

} // namespace
