// Feeds arbitrary bytes to EthPktParser as a received frame. Every result is
// read, and the checksums are run over the headers it found, so that the
// sanitizers see any offset that points outside the frame.

#include "MplsUtils/EthPktParser.h"
#include "Wirx/Checksum.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

volatile Orv::U64 sink;

Orv::U64 addrBits(const Wirx::IpGenAddr &addr) {
  if (addr.isIpv4()) {
    return addr.v4().value();
  }
  if (addr.isIpv6()) {
    return addr.v6().bytes()[15];
  }
  return 0;
}

Orv::U64 touchLayers(const MplsUtils::EthPktParser &parser) {
  Orv::U64 bits = static_cast<Orv::U64>(parser.parsedUpTo());
  bits += *parser.reason() + parser.ethDst().bytes()[0] +
          parser.ethSrc().bytes()[5] + parser.etherType();
  for (Orv::U32 i = 0; i < parser.vlanCount(); ++i) {
    bits += parser.vlanId(i);
  }
  for (const Wirx::MplsLabelEntry &entry : parser.labelStack()) {
    bits += entry.word();
  }
  bits += parser.isIpv4() + parser.isIpv6() + parser.ipHdrOffset() +
          parser.ipHdrLength() + parser.ipLength() + parser.ipTtl() +
          parser.routerAlert() + addrBits(parser.srcIp()) +
          addrBits(parser.dstIp());
  bits += parser.udpHdrOffset() + parser.udpPayloadOffset() +
          parser.udpLength() + parser.udpPayloadLength() + parser.srcPort() +
          parser.dstPort() + parser.udpChecksum();
  return bits;
}

Orv::U64 touchChecksums(const MplsUtils::EthPktParser &parser) {
  if (!parser.valid()) {
    return 0;
  }
  const Orv::U8 *frame = parser.frame();
  // The UDP bytes present, however long the header says the datagram is.
  const Orv::U32 udpBytes = 8 + parser.udpPayloadLength();
  const Orv::U8 *udp = frame + parser.udpHdrOffset();
  if (parser.isIpv4()) {
    return Wirx::ipv4HeaderChecksumOk(frame + parser.ipHdrOffset(),
                                      parser.ipHdrLength()) +
           Wirx::udpChecksumV4(parser.srcIp().v4(), parser.dstIp().v4(), udp,
                               udpBytes);
  }
  return Wirx::udpChecksumV6(parser.srcIp().v6(), parser.dstIp().v6(), udp,
                             udpBytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  // Frames longer than 64 KiB cannot be received; cutting there keeps the
  // length in 32 bits without changing what gets exercised.
  const Orv::U32 len =
      static_cast<Orv::U32>(std::min<std::size_t>(size, 65535));
  const MplsUtils::EthPktParser parser(data, len);
  sink = touchLayers(parser) + touchChecksums(parser);
  return 0;
}
