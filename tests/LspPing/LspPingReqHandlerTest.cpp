#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "LspPing/LspPingDownstreamMappingTlvParser.h"
#include "LspPing/LspPingIntfAndLabelStackTlvParser.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingReqHandler.h"
#include "LspPing/LspPingSrIgpProtocol.h"
#include "LspPing/LspPingTlvType.h"
#include "Mpls/LfibLabelAction.h"
#include "TestSupport.h"
#include "Wirx/MemUdpPam.h"

namespace LspPing {
namespace {

using Wirx::IpAddr;
using Wirx::MplsLabel;

const Mpls::FwdEqvClass ldpFec{Wirx::IpGenPrefix(IpAddr(0x0a090909), 32)};
const Mpls::FwdEqvClass egressFec{Wirx::IpGenPrefix(IpAddr(0x0a080808), 32)};
const Rsvp::RsvpSpId tunnel{IpAddr(0x0a070707), 7, IpAddr(0x0a000001), 9};
constexpr U32 transitLabel = 1000;

// What a request carries, and how it arrives.
struct Request {
  std::vector<U32> labels;
  enum class Fec { ldp, egress, srV4, srV6, rsvp, nil, pw } fec = Fec::ldp;
  bool dsMapping = false;
  bool multipath = false;
  bool ipv6 = false;
  // A Pad TLV: one the responder must understand and does not.
  bool pad = false;
  U8 msgType = 1;
  U8 replyMode = 2;
  U16 srcPort = 49152;
  U16 dstPort = 3503;
  // Per label, outermost first; labels past their end get tc 0 and TTL 255.
  std::vector<U8> tcs{};
  std::vector<U8> ttls{};

  Orv::Ptr<Wirx::Pkt> frame() const {
    auto pkt = Wirx::Pkt::make(0);
    auto gen = lspPingPktGenFactory(pkt);
    gen->initializedIs(true);
    const Wirx::EthAddr mac;
    gen->addEtherHdr(mac, mac,
                     labels.empty() ? (ipv6 ? 0x86DD : 0x0800) : 0x8847);
    for (std::size_t i = 0; i < labels.size(); ++i) {
      gen->addMplsHdr(labels[i], i < tcs.size() ? tcs[i] : 0,
                      i + 1 == labels.size(), i < ttls.size() ? ttls[i] : 255);
    }
    if (ipv6) {
      gen->addIp6Hdr(*Wirx::Ip6Addr::fromString("2001:db8::9"),
                     *Wirx::Ip6Addr::fromString("::1"), 1, 17);
    } else {
      gen->addIpHdr(IpAddr(0x0a000009), IpAddr(0x7f000001), 1, 17);
    }
    gen->addUdpHdr(srcPort, dstPort);
    gen->addLspPingHdr(1, 0, msgType, replyMode, 0, 0, 7, 5, 0xe0000000, 0x1000,
                       0, 0);
    gen->addLspPingTlvHdr(U16(LspPingTlvType::TargetFecStack), 0);
    addFec(*gen);
    gen->computeHdrLenChecksum();
    if (dsMapping) {
      LspPingDownstreamLabelStack stack;
      stack.labelEntryIs(0, LspPingDownstreamLabelEntry::fromWord(
                                (transitLabel << 12) | 0x100));
      stack.size = 1;
      LspPingMultipathBitset bits(multipath ? 4 : 0);
      if (multipath) {
        bits.bitsetIs(0, 0xF0);
      }
      gen->addLspPingDownstreamMappingTlv(
          1500, LspPingAddrType::ipv4Numbered, 0, IpAddr(0x0a000009),
          IpAddr(0x0a000009),
          multipath ? LspPingMultipathType::maskedIpSetMultipath
                    : LspPingMultipathType::noMultipath,
          0, IpAddr(0x7f000000), bits, stack);
      gen->computeHdrLenChecksum();
    }
    if (pad) {
      gen->addLspPingTlvHdr(U16(LspPingTlvType::Pad), 0);
      gen->computeHdrLenChecksum();
    }
    return pkt;
  }

  void addFec(LspPingPktGen &gen) const {
    switch (fec) {
    case Fec::ldp:
      gen.addLspPingLdpIpv4SubTlv(IpAddr(0x0a090909), 32);
      break;
    case Fec::egress:
      gen.addLspPingLdpIpv4SubTlv(IpAddr(0x0a080808), 32);
      break;
    case Fec::srV4:
      gen.addLspPingSrIpv4SubTlv(IpAddr(0x0a090909), 32,
                                 LspPingSrIgpProtocol::isis);
      break;
    case Fec::srV6:
      gen.addLspPingSrIpv6SubTlv(*Wirx::Ip6Addr::fromString("2001:db8::99"),
                                 128, LspPingSrIgpProtocol::isis);
      break;
    case Fec::rsvp:
      gen.addLspPingRsvpIpv4SubTlv(tunnel.tunnelDst, tunnel.tunnelId,
                                   tunnel.extendedTunnelId, IpAddr(0x0a000002),
                                   tunnel.lspId);
      break;
    case Fec::nil:
      gen.addLspPingNilFecSubTlv(labels.empty() ? 3 : labels[0]);
      break;
    case Fec::pw:
      break;
    }
  }
};

// A router with LDP bindings, a transit label with three ECMP vias (the
// second missing from the via table), an RSVP path and a TI-LFA tunnel.
struct Router {
  Router() {
    Mpls::CommonLibEntry transit;
    transit.labelIs(MplsLabel(transitLabel), true);
    transit.labelIs(MplsLabel(1001), false);
    lib->ldpTable().is(ldpFec, transit);
    Mpls::CommonLibEntry egress;
    egress.labelIs(MplsLabel(3), true);
    lib->ldpTable().is(egressFec, egress);
    lib->tableIs("isisV4").is(ldpFec, transit);

    lfib->routeIs(
        Mpls::LfibRoute{Mpls::RouteKey::fromLabel(MplsLabel(transitLabel)),
                        Mpls::LfibViaSetKey{1}, 8});
    Mpls::LfibViaSet ecmp;
    ecmp.viaType = Mpls::LfibViaType::viaTypeMpls;
    ecmp.viaIs(0, Mpls::LfibViaKey{10});
    ecmp.viaIs(1, Mpls::LfibViaKey{11});
    ecmp.viaIs(2, Mpls::LfibViaKey{12});
    lfib->viaSetIs(Mpls::LfibViaSetKey{1}, ecmp);
    lfib->viaIs(Mpls::LfibViaKey{10}, via("Ethernet1", 0x0a010002, 2000));
    lfib->viaIs(Mpls::LfibViaKey{12}, via("Ethernet2", 0x0a020002, 3000));
    hw->routeIs(Mpls::RouteKey::fromLabel(MplsLabel(transitLabel)),
                Mpls::Hardware::RouteStatus{0});

    auto mtu = Orv::make<Interface::IntfStatus>(Wirx::IntfId("Ethernet1"));
    mtu->mtuIs(9000);
    intfs->entryIs(Wirx::IntfId("Ethernet1"), {mtu, "eth1"});
    rsvp->spStateIs(tunnel, Rsvp::RsvpSpState{MplsLabel(transitLabel)});
  }

  static Mpls::LfibVia via(const char *intf, U32 nexthop, U32 outLabel) {
    Mpls::LfibVia v;
    v.intfId = Wirx::IntfId(intf);
    v.nexthop = IpAddr(nexthop);
    v.labelAction = Mpls::LfibLabelAction::swap;
    v.labelOp.push(MplsLabel(outLabel));
    return v;
  }

  bool answer(const Request &request) {
    MplsUtils::EthPktParser eth(request.frame());
    return handler->processPkt(eth);
  }

  // The last reply, parsed.
  Orv::Ptr<LspPingPduParser> reply() const {
    const std::vector<U8> &payload = pam4->datagrams().back().payload;
    auto parser = lspPingPduParserFactory(
        Wirx::Pkt::copyOf(payload.data(), U32(payload.size())), 0);
    parser->initializedIs(true);
    return parser;
  }
  std::vector<LspPingDownstreamMappingInfo> mappings() const {
    auto pdu = reply();
    std::vector<LspPingDownstreamMappingInfo> out;
    const TlvTypeOffsetColl *ds = pdu->tlvGroupParser()->tlvTypeOffset(2);
    for (U32 i = 0; ds && i < ds->offsetNum(); ++i) {
      auto parser =
          lspPingDownstreamMappingTlvParserFactory(pdu->pkt(), ds->offset(i));
      parser->initializedIs(true);
      EXPECT_TRUE(parser->valid()) << parser->reason();
      out.push_back(parser->downstreamMappingInfo());
    }
    return out;
  }

  Orv::Ptr<Mpls::Hardware::Status> hw = Orv::make<Mpls::Hardware::Status>("hw");
  Orv::Ptr<Mpls::Api::Status> api = Orv::make<Mpls::Api::Status>("api");
  Orv::Ptr<Mpls::CommonLib> lib = Orv::make<Mpls::CommonLib>("lib");
  Orv::Ptr<Mpls::LfibStatus> lfib = Orv::make<Mpls::LfibStatus>("lfib");
  Orv::Ptr<Mesk::Fib::ForwardingStatus> fib =
      Orv::make<Mesk::Fib::ForwardingStatus>("fib");
  Orv::Ptr<Mesk::Fib6::ForwardingStatus> fib6 =
      Orv::make<Mesk::Fib6::ForwardingStatus>("fib6");
  Orv::Ptr<Tunnel::TunnelTable::TiLfaTunnelTable> tiLfa =
      Orv::make<Tunnel::TunnelTable::TiLfaTunnelTable>("tilfa");
  Orv::Ptr<Wirx::MemUdpPam> pam4 = Orv::make<Wirx::MemUdpPam>("udp4", 3503);
  Orv::Ptr<Wirx::MemUdpPam> pam6 = Orv::make<Wirx::MemUdpPam>("udp6", 3503);
  Orv::Ptr<Rsvp::RsvpStatus> rsvp = Orv::make<Rsvp::RsvpStatus>("rsvp");
  Orv::Ptr<Interface::DeviceIntfStatusDir> intfs =
      Orv::make<Interface::DeviceIntfStatusDir>("intfs");
  Orv::Ptr<LspPingReqHandler> handler = lspPingReqHandlerFactory(
      hw, api, lib, lfib, fib, fib6, tiLfa, pam4, pam6, IpAddr(0x0a0000fe),
      *Wirx::Ip6Addr::fromString("2001:db8::fe"), rsvp, intfs);
};

using Fec = Request::Fec;

Mpls::CommonLibEntry binding(U32 label, bool inUse) {
  Mpls::CommonLibEntry entry;
  entry.labelIs(MplsLabel(label), inUse);
  return entry;
}

TEST(LspPingReqHandler, ReturnCodes) {
  using Code = LspPingReturnCode;
  struct Case {
    const char *name;
    Request request;
    Code code;
    U8 subcode;
    // Changes to the router's state before the request arrives.
    void (*setup)(Router &) = nullptr;
  };
  Request padded{{transitLabel}, Fec::ldp};
  padded.pad = true;
  const Case cases[] = {
      {"unlabelled egress", {{}, Fec::egress}, Code::repRouterEgress, 1},
      {"transit", {{transitLabel}, Fec::ldp}, Code::labelSwitchedAtStackDep, 1},
      {"another FEC's label",
       {{transitLabel}, Fec::egress},
       Code::labelMappingMismatch,
       1},
      {"LDP binds another label",
       {{transitLabel}, Fec::ldp},
       Code::labelMappingMismatch,
       1,
       [](Router &r) { r.lib->ldpTable().is(ldpFec, binding(1001, true)); }},
      {"label bound, not in use",
       {{transitLabel}, Fec::ldp},
       Code::labelMappingMismatch,
       1,
       [](Router &r) {
         r.lib->ldpTable().is(ldpFec, binding(transitLabel, false));
       }},
      {"no LDP binding",
       {{transitLabel}, Fec::ldp},
       Code::noMappingForFec,
       1,
       [](Router &r) { r.lib->ldpTable().del(ldpFec); }},
      {"no route", {{777, 16}, Fec::ldp}, Code::labelSwitchedNoMplsFwd, 2},
      {"unlabelled transit FEC", {{}, Fec::ldp}, Code::labelMappingMismatch, 1},
      {"segment routing IPv4",
       {{transitLabel}, Fec::srV4},
       Code::labelSwitchedAtStackDep,
       1},
      {"no isisV6 table",
       {{transitLabel}, Fec::srV6},
       Code::protocolIntfMismatch,
       1},
      {"RSVP transit",
       {{transitLabel}, Fec::rsvp},
       Code::labelSwitchedAtStackDep,
       1},
      {"RSVP egress", {{}, Fec::rsvp}, Code::repRouterEgress, 1},
      {"RSVP path with another label",
       {{transitLabel}, Fec::rsvp},
       Code::labelMappingMismatch,
       1,
       [](Router &r) {
         r.rsvp->spStateIs(tunnel, Rsvp::RsvpSpState{MplsLabel(55)});
       }},
      {"no RSVP",
       {{transitLabel}, Fec::rsvp},
       Code::protocolIntfMismatch,
       1,
       [](Router &r) { r.rsvp->spStateTableDel(); }},
      {"Nil FEC", {{transitLabel}, Fec::nil}, Code::noRetCode, 0},
      {"pseudowire", {{}, Fec::pw}, Code::noRetCode, 0},
      {"a TLV not understood", padded, Code::tlvNotUnderstood, 0},
  };
  for (const Case &c : cases) {
    Router router;
    if (c.setup) {
      c.setup(router);
    }
    ASSERT_TRUE(router.answer(c.request)) << c.name;
    const LspPingHdr *hdr = router.reply()->lspPingHdr();
    ASSERT_NE(hdr, nullptr) << c.name;
    EXPECT_EQ(Code(hdr->returnCode), c.code) << c.name;
    EXPECT_EQ(hdr->returnSubcode, c.subcode) << c.name;
  }
}

TEST(LspPingReqHandler, ReplyEchoesTheRequestAndGoesBackToItsSender) {
  Router router;
  ASSERT_TRUE(router.answer({{transitLabel}, Fec::ldp}));
  const Wirx::UdpDatagram &sent = router.pam4->datagrams().back();
  EXPECT_EQ(sent.dstAddr.stringValue(), "10.0.0.9");
  EXPECT_EQ(sent.dstPort, 49152);
  EXPECT_EQ(sent.srcAddr.stringValue(), "10.0.0.254");
  const LspPingHdr &hdr = *router.reply()->lspPingHdr();
  EXPECT_EQ(hdr.messageType, 2);
  EXPECT_EQ(hdr.replyMode, 2);
  EXPECT_EQ(hdr.senderHandle(), 7u);
  EXPECT_EQ(hdr.sequenceNumber(), 5u);
  EXPECT_EQ(hdr.tsSentSeconds(), 0xe0000000u);
  EXPECT_EQ(hdr.tsSentmSeconds(), 0x1000u);
  EXPECT_NE(hdr.tsRcvdSeconds(), 0u);
  EXPECT_EQ(router.reply()->tlvNum(), 0u) << "no mapping asked for";

  Request v6{{}, Fec::egress};
  v6.ipv6 = true;
  ASSERT_TRUE(router.answer(v6));
  ASSERT_EQ(router.pam6->datagrams().size(), 1u);
  EXPECT_EQ(router.pam6->datagrams()[0].dstAddr.stringValue(), "2001:db8::9");
  EXPECT_EQ(router.pam6->datagrams()[0].srcAddr.stringValue(), "2001:db8::fe");
}

TEST(LspPingReqHandler, OneMappingPerUsableViaWithMultipathOnTheFirstOnly) {
  Router router;
  TestSupport::TraceCapture log("LspPing/LspPingReqHandler", 9);
  Request request{{transitLabel}, Fec::ldp};
  request.dsMapping = true;
  request.multipath = true;
  ASSERT_TRUE(router.answer(request));
  const auto mappings = router.mappings();
  ASSERT_EQ(mappings.size(), 2u) << "the missing via is skipped";
  EXPECT_TRUE(
      log.has("getDownstreamMappingInfo viaKey Value('Mpls::LfibViaKey', "
              "** {'id': 11}) missing from transitLfib, skipping"));
  EXPECT_EQ(mappings[0].dsIpAddr.stringValue(), "10.1.0.2");
  EXPECT_EQ(mappings[0].mtu, 9000);
  EXPECT_EQ(mappings[1].mtu, 1500) << "no interface status: the default";
  EXPECT_EQ(mappings[0].multipathType, 8);
  EXPECT_EQ(mappings[0].dsMultipathBitset.size, 4u);
  EXPECT_EQ(mappings[1].multipathType, 0);
  const LspPingDownstreamLabelEntry top = mappings[1].labelStack.labelEntry[0];
  EXPECT_EQ(top.label().value(), 3000u);
  EXPECT_TRUE(top.bos());
  EXPECT_EQ(top.protocol(),
            LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolLdp);
}

TEST(LspPingReqHandler, TiLfaTunnelViaMapsThroughTheTunnel) {
  Router router;
  Mpls::LfibVia tunnelVia = Router::via("TiLfaTunnel4", 0, 0);
  tunnelVia.labelOp = Wirx::MplsLabelStack();
  router.lfib->viaIs(Mpls::LfibViaKey{11}, tunnelVia);
  Tunnel::TunnelTable::TiLfaTunnelTableEntry entry;
  entry.intfId = Wirx::IntfId("Ethernet1");
  entry.nexthop = IpAddr(0x0a030002);
  entry.labelStack.push(MplsLabel(4000));
  entry.labelStack.push(MplsLabel(4001));
  router.tiLfa->tunnelIs(Tunnel::TunnelId(4), entry);
  Request request{{transitLabel}, Fec::ldp};
  request.dsMapping = true;
  ASSERT_TRUE(router.answer(request));
  const auto mappings = router.mappings();
  ASSERT_EQ(mappings.size(), 3u);
  EXPECT_EQ(mappings[1].dsIpAddr.stringValue(), "10.3.0.2");
  EXPECT_EQ(mappings[1].mtu, 9000);
  EXPECT_EQ(mappings[1].labelStack.size, 2);
  EXPECT_EQ(mappings[1].labelStack.labelEntry[0].label().value(), 4000u);

  router.tiLfa->tunnelDel(Tunnel::TunnelId(4));
  TestSupport::TraceCapture log("LspPing/LspPingReqHandler", 9);
  router.answer(request);
  EXPECT_EQ(router.mappings().size(), 2u);
  EXPECT_TRUE(log.has("getDownstreamMappingInfo TI-LFA tunnel 4 missing from "
                      "tunnel table, skipping"));
}

TEST(LspPingReqHandler, LabelStackEchoedWhenAnsweredWithoutVerdict) {
  Router router;
  Request request{{transitLabel, 16}, Fec::nil};
  request.tcs = {3, 0};
  request.ttls = {5, 1};
  ASSERT_TRUE(router.answer(request));
  auto pdu = router.reply();
  ASSERT_EQ(pdu->tlvNum(), 1u);
  auto ils =
      lspPingIntfAndLabelStackTlvParserFactory(pdu->pkt(), pdu->tlvOffset(0));
  ils->initializedIs(true);
  ASSERT_TRUE(ils->valid()) << ils->reason();
  EXPECT_EQ(ils->intfAndLabelStackInfo().labelStack.stringValue(),
            "[1000/tc=3/ttl=5, 16/bos/ttl=1]")
      << "every entry as received";

  ASSERT_TRUE(router.answer({{}, Fec::nil}));
  EXPECT_EQ(router.reply()->tlvNum(), 0u) << "unlabelled: no TLV";
}

TEST(LspPingReqHandler, UnprogrammedLabelIsDroppedUnlessExplicitNull) {
  Router router;
  TestSupport::TraceCapture log("LspPing/LspPingReqHandler", 9);
  EXPECT_FALSE(router.answer({{2222}, Fec::nil}));
  EXPECT_TRUE(log.has("unprogrammed label: 2222"));
  router.hw->routeIs(Mpls::RouteKey::fromLabel(MplsLabel(2222)),
                     Mpls::Hardware::RouteStatus{1});
  EXPECT_FALSE(router.answer({{2222}, Fec::nil}));
  EXPECT_TRUE(router.answer({{0, 2222}, Fec::nil}));
  EXPECT_TRUE(router.pam4->datagrams().size() == 1);
}

TEST(LspPingReqHandler, DropChecks) {
  struct Case {
    const char *trace;
    Request request;
  };
  Request reply{{}, Fec::egress};
  reply.msgType = 2;
  reply.srcPort = 3503;
  Request replyFromElsewhere = reply;
  replyFromElsewhere.srcPort = 4000;
  Request wrongPort{{}, Fec::egress};
  wrongPort.dstPort = 3504;
  Request dontReply{{}, Fec::egress};
  dontReply.replyMode = 1;
  Request routerAlert{{}, Fec::egress};
  routerAlert.replyMode = 3;
  for (const Case &c : {Case{"wrong message type", reply},
                        Case{"Wrong UDP sport", replyFromElsewhere},
                        Case{"Wrong UDP dport", wrongPort},
                        Case{"unsupported reply mode", dontReply},
                        Case{"unsupported reply mode", routerAlert}}) {
    Router router;
    TestSupport::TraceCapture log("LspPing/LspPingReqHandler", 9);
    EXPECT_FALSE(router.answer(c.request)) << c.trace;
    EXPECT_TRUE(log.has(c.trace)) << c.trace;
    EXPECT_TRUE(router.pam4->datagrams().empty());
  }
}

TEST(LspPingReqHandler, MalformedPacketsAreDroppedWithTheirReason) {
  Router router;
  TestSupport::TraceCapture log("LspPing/LspPingReqHandler", 9);
  Orv::Ptr<Wirx::Pkt> full = Request{{transitLabel}, Fec::ldp}.frame();
  // Cut inside the echo header: the parser's reason is traced.
  auto cut = Wirx::Pkt::copyOf(full->data(), 14 + 4 + 24 + 8 + 20);
  EXPECT_FALSE(router.handler->processPkt(MplsUtils::EthPktParser(cut)));
  EXPECT_TRUE(log.has("LspPingHdr is corrupted"));
  // Cut inside the UDP header: counted from where that header starts, not
  // from wherever the Ethernet parser stopped.
  auto noUdp = Wirx::Pkt::copyOf(full->data(), 14 + 4 + 24 + 5);
  EXPECT_FALSE(router.handler->processPkt(MplsUtils::EthPktParser(noUdp)));
  EXPECT_EQ(
      log.levelOf("Packet UDP payload has incorrect size: 5 (expected 8)"), 0);
  EXPECT_FALSE(log.has("Invalid lspPingHdr"));
  for (U32 len = 0; len < full->frontBytes(); ++len) {
    auto part = Wirx::Pkt::copyOf(full->data(), len);
    EXPECT_FALSE(router.handler->processPkt(MplsUtils::EthPktParser(part)))
        << len;
  }
}

} // namespace
} // namespace LspPing
