// Feeds arbitrary bytes to the Target FEC Stack, Interface and Label Stack
// and Downstream Mapping TLV parsers. None may crash, read outside the
// packet, throw or reach a fatal assertion: each reports valid() or a reason.
#include <cstddef>
#include <cstdint>

#include "LspPing/LspPingDownstreamMappingTlvParser.h"
#include "LspPing/LspPingIntfAndLabelStackTlvParser.h"
#include "LspPing/LspPingTargetFecTlvParser.h"
#include "fuzz/FuzzInput.h"

using FuzzInput::consume;

namespace {

void targetFec(const Orv::Ptr<Wirx::Pkt> &pkt) {
  // The first four bytes stand for the enclosing TLV's header.
  auto parser = LspPing::lspPingTargetFecTlvParserFactory(pkt, 4);
  parser->initializedIs(true);
  consume(parser->valid() + parser->reason().size() + parser->tlvNum());
  consume(parser->targetFec().stringValue().size());
  consume(parser->rsvpSpId().hash() + parser->pwInfo().pwId);
  if (parser->ldpIpv4SubTlv()) {
    consume(parser->ldpIpv4SubTlv()->stringValue().size());
  }
  if (parser->fec128Ipv4SubTlv()) {
    consume(parser->fec128Ipv4SubTlv()->stringValue().size());
  }
}

void intfAndLabelStack(const Orv::Ptr<Wirx::Pkt> &pkt) {
  auto parser = LspPing::lspPingIntfAndLabelStackTlvParserFactory(pkt, 0);
  parser->initializedIs(true);
  consume(parser->valid() + parser->reason().size());
  consume(parser->intfAndLabelStackInfo().labelStack.size());
}

void downstreamMapping(const Orv::Ptr<Wirx::Pkt> &pkt) {
  auto parser = LspPing::lspPingDownstreamMappingTlvParserFactory(pkt, 0);
  parser->initializedIs(true);
  consume(parser->valid() + parser->reason().size());
  const LspPing::LspPingDownstreamMappingInfo &info =
      parser->downstreamMappingInfo();
  consume(info.labelStack.size + info.dsMultipathBitset.size + info.mtu);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  auto pkt = FuzzInput::packetOf(data, size);
  if (!pkt) {
    return -1;
  }
  targetFec(pkt);
  intfAndLabelStack(pkt);
  downstreamMapping(pkt);
  return 0;
}
