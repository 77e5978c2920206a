#pragma once

#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingDownstreamLabelStack.h"
#include "LspPing/LspPingEnum.h"
#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingMultipathBitset.h"
#include "LspPing/LspPingMultipathType.h"
#include "LspPing/LspPingSrIgpProtocol.h"
#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/EthAddr.h"
#include "Wirx/EthHdr.h"
#include "Wirx/IntfId.h"
#include "Wirx/Ip6Addr.h"
#include "Wirx/IpAddr.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/Ipv4Hdr.h"
#include "Wirx/Ipv6Hdr.h"
#include "Wirx/MplsLabelStack.h"
#include "Wirx/Nbo.h"
#include "Wirx/Pkt.h"
#include "Wirx/UdpHdr.h"

namespace LspPing {

// What the generator reads of a multipath bitset: its length and its bytes
// in wire order, a byte not stored being 0. Made implicitly from the value.
class LSPPING_EXPORT LspPingMultipathBitsetBytes {
public:
  LspPingMultipathBitsetBytes(const LspPingMultipathBitset &bitset)
      : bitset_(bitset) {}
  U32 size() const { return bitset_.size; }
  // Writes the size() bytes to `out`, which the caller has zeroed.
  void copyTo(U8 *out) const;

private:
  const LspPingMultipathBitset &bitset_;
};

// Writes one echo message into a packet, a layer at a time and strictly in
// wire order: Ethernet header, label stack entries, an IPv4 or an IPv6
// header, UDP header, echo header, then TLVs and sub-TLVs. Every layer is
// written in place at the packet's tail; the generator keeps where each one
// starts and how long it is, so that computeHdrLenChecksum() fills every
// length field and checksum once, at the end, instead of per layer.
//
// Layer offsets count from the start of the packet's data, so they are the
// offsets a parser of the finished frame is given. A caller that leaves out
// the lower layers (a reply handed to a UDP socket) starts with the echo
// header.
//
// The caller chooses every value and the order of the calls: a layer that
// does not fit, a layer out of order or an unsupported address or multipath
// type is a programming error and stops the process.
class LSPPING_EXPORT LspPingPktGen : public Orv::Entity {
public:
  explicit LspPingPktGen(Orv::Ptr<Wirx::Pkt> pkt);

  // The packet being written.
  const Orv::Ptr<Wirx::Pkt> &pkt() const { return pkt_; }
  // Where the generator's first byte goes: the packet's data length when the
  // generator was made (0 for a new packet).
  U32 offset() const { return offset_; }
  // Room behind the packet's data when the generator was initialized, and
  // the room still free; every adder lowers the latter by what it appends.
  U32 totalTailRoom() const { return totalTailRoom_; }
  void totalTailRoomIs(U32 room) { totalTailRoom_ = room; }
  U32 availTailRoom() const { return availTailRoom_; }
  void availTailRoomIs(U32 room) { availTailRoom_ = room; }
  void availTailRoomDec(U32 bytes) { availTailRoom_ -= bytes; }

  // Each layer written so far, null until it is: the header in the packet,
  // its offset in the packet's data and its length.
  Wirx::EthHdr *ethHeader() const { return ethHeader_; }
  U16 ethHeaderOffset() const { return ethHeaderOffset_; }
  U16 ethHeaderLength() const { return ethHeaderLength_; }
  // The outermost label stack entry; the length grows by 4 per label.
  Wirx::U32Nbo *mplsHeader() const { return mplsHeader_; }
  U16 mplsHeaderOffset() const { return mplsHeaderOffset_; }
  U16 mplsHeaderLength() const { return mplsHeaderLength_; }
  // The IPv4 header, Router Alert option included (24 bytes), or the IPv6
  // header (40 bytes); either one's offset and length.
  Wirx::IpHdr *ipHeader() const { return ipHeader_; }
  Wirx::Ip6Hdr *ip6Header() const { return ip6Header_; }
  U16 ipHeaderOffset() const { return ipHeaderOffset_; }
  U16 ipHeaderLength() const { return ipHeaderLength_; }
  Wirx::UdpHdr *udpHeader() const { return udpHeader_; }
  U16 udpHeaderOffset() const { return udpHeaderOffset_; }
  U16 udpHeaderLength() const { return udpHeaderLength_; }
  // Bytes written behind the UDP header: echo header and TLVs.
  U16 udpPayloadLength() const { return udpPayloadLength_; }
  void udpPayloadLengthIs(U16 length) { udpPayloadLength_ = length; }
  void udpPayloadLengthInc(U16 bytes) { udpPayloadLength_ += bytes; }
  LspPingHdr *lspPingHdr() const { return lspPingHdr_; }
  U16 lspPingHdrLength() const { return lspPingHdrLength_; }
  // The TLV header added last, and the bytes added behind it since: the
  // length computeHdrLenChecksum() writes into it.
  LspPingTlvHdr *lspPingTlvHdr() const { return lspPingTlvHdr_; }
  U16 lspPingTlvHdrLength() const { return lspPingTlvHdrLength_; }
  void lspPingTlvHdrLengthIs(U16 length) { lspPingTlvHdrLength_ = length; }
  void lspPingTlvHdrLengthInc(U16 bytes) { lspPingTlvHdrLength_ += bytes; }

  bool initialized() const { return initialized_; }
  // Set once by the owner after construction; measures the tail room.
  void initializedIs(bool initialized);

  // The Ethernet header, first of all.
  void addEtherHdr(const Wirx::EthAddr &dst, const Wirx::EthAddr &src,
                   U16 ethType);
  // One label stack entry, outermost first. The caller sets the
  // bottom-of-stack bit on the last one.
  void addMplsHdr(U32 label, U8 tc, bool bos, U8 ttl);
  // Exactly one IP header. IPv4 always carries the Router Alert option;
  // IPv6 carries no extension header.
  void addIpHdr(Wirx::IpAddr src, Wirx::IpAddr dst, U8 ttl, U8 proto);
  void addIp6Hdr(const Wirx::Ip6Addr &src, const Wirx::Ip6Addr &dst,
                 U8 hopLimit, U8 nextHeader);
  void addUdpHdr(U16 srcPort, U16 dstPort);
  // The echo header, every field as given, in header order.
  void addLspPingHdr(U16 version, U16 globalFlags, U8 messageType, U8 replyMode,
                     U8 returnCode, U8 returnSubcode, U32 senderHandle,
                     U32 sequenceNumber, U32 tsSentSeconds, U32 tsSentFraction,
                     U32 tsRcvdSeconds, U32 tsRcvdFraction);

  // A TLV header whose value the sub-TLV adders that follow make up; its
  // length is filled in by computeHdrLenChecksum().
  void addLspPingTlvHdr(U16 type, U16 length);
  // Target FEC Stack sub-TLVs.
  void addLspPingLdpIpv4SubTlv(Wirx::IpAddr prefix, U8 prefixLen);
  void addLspPingRsvpIpv4SubTlv(Wirx::IpAddr destination, U16 tunnelId,
                                Wirx::IpAddr extendedTunnelId,
                                Wirx::IpAddr senderAddress, U16 lspId);
  // The segment-routing length fields (6 and 18) leave out the two reserved
  // bytes, which are written all the same.
  void addLspPingSrIpv4SubTlv(Wirx::IpAddr prefix, U8 prefixLen,
                              LspPingSrIgpProtocol protocol);
  void addLspPingSrIpv6SubTlv(const Wirx::Ip6Addr &prefix, U8 prefixLen,
                              LspPingSrIgpProtocol protocol);
  void addLspPingNilFecSubTlv(U32 label);

  // The two whole-TLV adders below first fill in the length of the TLV
  // header added before them, as computeHdrLenChecksum() would, then make
  // their own TLV the one added last, with its own length: a Target FEC
  // Stack built of sub-TLVs keeps its right length whether or not the
  // lengths were computed before a whole TLV was added.
  //
  // A whole Interface and Label Stack TLV. Only the label stack is written:
  // the address and interface fields stay zero, `addr` only picks the IPv4
  // or IPv6 layout (and must be of the family `addrType` names) and `intf`
  // is not used. The stack holds labels only, so each entry carries traffic
  // class 0 and TTL 0, and the last one the bottom-of-stack bit.
  void addLspPingIntfAndLabelStackTlv(LspPingAddrType addrType,
                                      const Wirx::IpGenAddr &addr,
                                      const Wirx::IntfId &intf,
                                      const Wirx::MplsLabelStack &labelStack);

  // A whole Downstream Mapping TLV: the addresses are of the family
  // `addrType` names, the multipath information is absent (noMultipath, with
  // an empty bitset) or a masked IP set (a base address and a bitset whose
  // length is a multiple of 4), and each downstream label is written as its
  // four bytes, protocol byte included.
  void addLspPingDownstreamMappingTlv(
      U16 mtu, LspPingAddrType addrType, U8 dsFlags,
      const Wirx::IpGenAddr &dsIpAddr, const Wirx::IpGenAddr &dsIntfAddr,
      LspPingMultipathType multipathType, U8 depthLimit,
      const Wirx::IpGenAddr &dsMultipathBaseAddr,
      LspPingMultipathBitsetBytes dsMultipathBitset,
      const LspPingDownstreamLabelStack &labelStack);

  // Once, after the last TLV: the length of the TLV header added last, the
  // UDP length and checksum, the IPv4 total length and header checksum or
  // the IPv6 payload length. Calling it again after more TLVs recomputes
  // them all.
  void computeHdrLenChecksum();

private:
  // Measures the tail room: everything after this is counted against it.
  void handleInitialized();
  // Appends a header at the tail and counts it in the tail room; header
  // adders write every field, so the bytes are not zeroed first.
  template <class Hdr> Hdr *appendHdr();
  // Writes the bytes counted since the TLV header added last into its length
  // field.
  void closeOpenTlv();
  // The offset in the packet's data where the next byte goes.
  U16 tailOffset() const;

  Orv::Ptr<Wirx::Pkt> pkt_;
  U32 offset_;
  U32 totalTailRoom_ = 0;
  U32 availTailRoom_ = 0;
  Wirx::EthHdr *ethHeader_ = nullptr;
  U16 ethHeaderOffset_ = 0;
  U16 ethHeaderLength_ = 0;
  Wirx::U32Nbo *mplsHeader_ = nullptr;
  U16 mplsHeaderOffset_ = 0;
  U16 mplsHeaderLength_ = 0;
  Wirx::IpHdr *ipHeader_ = nullptr;
  Wirx::Ip6Hdr *ip6Header_ = nullptr;
  U16 ipHeaderOffset_ = 0;
  U16 ipHeaderLength_ = 0;
  Wirx::UdpHdr *udpHeader_ = nullptr;
  U16 udpHeaderOffset_ = 0;
  U16 udpHeaderLength_ = 0;
  U16 udpPayloadLength_ = 0;
  LspPingHdr *lspPingHdr_ = nullptr;
  U16 lspPingHdrLength_ = 0;
  LspPingTlvHdr *lspPingTlvHdr_ = nullptr;
  U16 lspPingTlvHdrLength_ = 0;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingPktGen>
lspPingPktGenFactory(Orv::Ptr<Wirx::Pkt> pkt);

} // namespace LspPing
