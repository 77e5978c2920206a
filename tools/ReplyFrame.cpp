#include "tools/ReplyFrame.h"

#include <algorithm>

#include "Wirx/Checksum.h"
#include "Wirx/EthHdr.h"
#include "Wirx/Ipv4Hdr.h"
#include "Wirx/Ipv6Hdr.h"
#include "Wirx/UdpHdr.h"

namespace LspPingTool {

namespace {

using Orv::U16;
using Orv::U32;
using Orv::U8;

constexpr U8 replyTtl = 64;

template <class Hdr> Hdr *at(std::vector<U8> &frame, std::size_t offset) {
  return reinterpret_cast<Hdr *>(frame.data() + offset);
}

} // namespace

std::vector<U8> replyFrame(const MplsUtils::EthPktParser &request,
                           const Wirx::UdpDatagram &reply) {
  const bool v4 = reply.dstAddr.isIpv4();
  const std::size_t ipLength =
      v4 ? sizeof(Wirx::Ipv4Hdr) : sizeof(Wirx::Ipv6Hdr);
  const std::size_t udpOffset = sizeof(Wirx::EthHdr) + ipLength;
  const U32 udpLength = U32(sizeof(Wirx::UdpHdr) + reply.payload.size());
  std::vector<U8> frame(udpOffset + udpLength);

  auto *eth = at<Wirx::EthHdr>(frame, 0);
  eth->dstIs(request.ethSrc());
  eth->srcIs(request.ethDst());
  eth->etherTypeIs(v4 ? Wirx::EthHdr::etherTypeIpv4
                      : Wirx::EthHdr::etherTypeIpv6);

  auto *udp = at<Wirx::UdpHdr>(frame, udpOffset);
  udp->srcPortIs(reply.srcPort);
  udp->dstPortIs(reply.dstPort);
  udp->lengthIs(U16(udpLength));
  udp->checksumIs(0);
  std::copy(reply.payload.begin(), reply.payload.end(),
            frame.begin() + std::ptrdiff_t(udpOffset + sizeof(Wirx::UdpHdr)));
  const U8 *udpBytes = frame.data() + udpOffset;

  if (v4) {
    auto *ip = at<Wirx::Ipv4Hdr>(frame, sizeof(Wirx::EthHdr));
    ip->ihlIs(Wirx::Ipv4Hdr::minIhl);
    ip->tosIs(0);
    ip->totalLengthIs(U16(ipLength + udpLength));
    ip->idIs(0);
    ip->flagsFragmentIs(Wirx::Ipv4Hdr::flagDontFragment);
    ip->ttlIs(replyTtl);
    ip->protocolIs(Wirx::Ipv4Hdr::protocolUdp);
    ip->checksumIs(0);
    ip->srcIs(reply.srcAddr.v4());
    ip->dstIs(reply.dstAddr.v4());
    ip->checksumIs(Wirx::ipv4HeaderChecksum(frame.data() + sizeof(Wirx::EthHdr),
                                            U32(ipLength)));
    udp->checksumIs(Wirx::udpChecksumV4(reply.srcAddr.v4(), reply.dstAddr.v4(),
                                        udpBytes, udpLength));
  } else {
    auto *ip = at<Wirx::Ipv6Hdr>(frame, sizeof(Wirx::EthHdr));
    ip->classFlowIs(0, 0);
    ip->payloadLengthIs(U16(udpLength));
    ip->nextHeaderIs(Wirx::Ipv6Hdr::nextHeaderUdp);
    ip->hopLimitIs(replyTtl);
    ip->srcIs(reply.srcAddr.v6());
    ip->dstIs(reply.dstAddr.v6());
    udp->checksumIs(Wirx::udpChecksumV6(reply.srcAddr.v6(), reply.dstAddr.v6(),
                                        udpBytes, udpLength));
  }
  return frame;
}

} // namespace LspPingTool
