// Traces through routers whose answers are not the library responder's:
// p1's replies are rewritten on their way to pe1.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingReturnCode.h"
#include "Netsim/SessionHost.h"
#include "Netsim/TraceLab.h"
#include "Session/TraceSession.h"

namespace {

using LspPing::LspPingPktGen;
using Session::Trace;
using Session::TraceSession;

using Answer = std::function<void(LspPingPktGen &)>;

struct Net {
  // p1 answers every request with the TLVs `answer` writes, code 8, and
  // `patch` then applied to the reply's bytes.
  void p1Answers(
      Answer answer, std::function<void(Orv::U8 *)> patch = [](Orv::U8 *) {}) {
    network.datagramTapIs(
        [this, answer, patch](const Netsim::Router &,
                              const Netsim::Datagram &datagram) {
          if (datagram.srcAddr != Wirx::IpGenAddr(lab.p1.addr())) {
            return;
          }
          LspPing::LspPingHdr hdr;
          std::memcpy(&hdr, datagram.payload->data(), sizeof hdr);
          auto reply = Wirx::Pkt::make(0);
          auto gen = LspPing::lspPingPktGenFactory(reply);
          gen->initializedIs(true);
          gen->addLspPingHdr(
              1, 0, 2, 2,
              Orv::U8(LspPing::LspPingReturnCode::labelSwitchedAtStackDep), 1,
              hdr.senderHandle(), hdr.sequenceNumber(), hdr.tsSentSeconds(),
              hdr.tsSentmSeconds(), 0, 0);
          answer(*gen);
          gen->computeHdrLenChecksum();
          patch(reply->data());
          Wirx::Pkt &payload = *datagram.payload;
          payload.reset(0);
          std::memcpy(payload.append(reply->frontBytes()), reply->data(),
                      reply->frontBytes());
        });
  }

  Trace trace(bool tree) {
    TraceSession::Options options;
    options.maxTtl = 8;
    options.tree = tree;
    Trace result;
    bool done = false;
    Session::Target target;
    target.fec = Netsim::TraceLab::fec();
    TraceSession session(host, 1, target, options, {{}, [&](const Trace &t) {
                                                      result = t;
                                                      done = true;
                                                    }});
    while (!done) {
      time.runFor(1);
    }
    return result;
  }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, 1'800'000'000.0};
  Netsim::Network network{wheel};
  Netsim::TraceLab lab{network, 1.0 / 64};
  Netsim::SessionHost host{lab.pe1};
};

// A mapping to 10.0.0.`router` with `label`, the destinations among
// 127.0.0.1-16 that it takes as a masked IP set.
void mapping(LspPingPktGen &gen, Orv::U32 router, Orv::U32 label,
             const std::vector<Wirx::IpGenAddr> &destinations) {
  LspPing::LspPingMultipathBitset bitset(destinations.empty() ? 0 : 4);
  for (const Wirx::IpGenAddr &dst : destinations) {
    const Orv::U32 bit = dst.v4().value() & 0xff;
    bitset.bitsetIs(bit / 8, Orv::U8(bitset.bitset[bit / 8] | 0x80 >> bit % 8));
  }
  LspPing::LspPingDownstreamLabelStack labels;
  labels.labelEntryIs(0, LspPing::LspPingDownstreamLabelEntry::fromLabel(
                             Wirx::MplsLabel(label), 0, true, {}));
  labels.size = 1;
  const Wirx::IpGenAddr addr(Wirx::IpAddr(0x0a000000 | router));
  gen.addLspPingDownstreamMappingTlv(
      1500, LspPing::LspPingAddrType::ipv4Numbered, 0, addr, addr,
      destinations.empty()
          ? LspPing::LspPingMultipathType::noMultipath
          : LspPing::LspPingMultipathType::maskedIpSetMultipath,
      0, Wirx::IpAddr(0x7f000000), bitset, labels);
}

// A responder that tells which destinations take which mapping is taken at
// its word: no request is spent finding out.
TEST(OtherResponder, TreeTraceTakesTheSplitItIsTold) {
  Net net;
  const Trace found = net.trace(true);
  ASSERT_EQ(found.paths.size(), 2u);
  const auto healthy = found.paths[0].destinations;
  const auto broken = found.paths[1].destinations;
  net.p1Answers([&](LspPingPktGen &gen) {
    mapping(gen, 3, 2005, healthy);
    mapping(gen, 4, 3006, broken);
  });
  const Trace told = net.trace(true);
  ASSERT_EQ(told.paths.size(), 2u);
  EXPECT_EQ(told.paths[0].destinations, healthy);
  EXPECT_EQ(told.paths[1].destinations, broken);
  EXPECT_EQ(told.paths[1].end, Session::Path::End::failed);
  EXPECT_EQ(told.requests, 4u);
}

// Mappings the generator could not write back are not carried on: the
// trace goes on without, to the egress.
TEST(OtherResponder, MappingsThatCannotBeSentOnAreLeftBehind) {
  // The reply: echo header (32 bytes), TLV header (4), MTU, address type
  // and flags (4), two addresses (8), then the multipath type; the label
  // entry is last, its bottom-of-stack bit in its third byte.
  constexpr std::size_t multipathType = 32 + 4 + 4 + 8;
  constexpr std::size_t bottomOfStack = 32 + 4 + 4 + 8 + 4 + 2;
  const std::function<void(Orv::U8 *)> patches[] = {
      [](Orv::U8 *reply) { reply[multipathType] = 7; },
      [](Orv::U8 *reply) { reply[bottomOfStack] &= ~1; },
  };
  for (const auto &patch : patches) {
    Net net;
    net.p1Answers([](LspPingPktGen &gen) { mapping(gen, 3, 2005, {}); }, patch);
    const Trace trace = net.trace(false);
    ASSERT_EQ(trace.paths.size(), 1u);
    EXPECT_TRUE(trace.reachedEgress());
    ASSERT_EQ(trace.paths[0].hops[0].reply.mappings.size(), 1u)
        << "parsed, and shown";
  }
}

} // namespace
