#include "LspPing/LspPingPktGen.h"

#include <cstring>

#include "LspPing/LspPingDownstreamMappingHdr.h"
#include "LspPing/LspPingDownstreamMappingTlvIpAndIntfLen.h"
#include "LspPing/LspPingIntfAndLabelStackHdr.h"
#include "LspPing/LspPingIntfAndLabelStackTlvIpAndIntfLen.h"
#include "LspPing/LspPingLdpIpv4SubTlv.h"
#include "LspPing/LspPingNilFecSubTlv.h"
#include "LspPing/LspPingRsvpIpv4SubTlv.h"
#include "LspPing/LspPingSrIpv4SubTlv.h"
#include "LspPing/LspPingSrIpv6SubTlv.h"
#include "LspPing/LspPingTargetFecSubTlvType.h"
#include "LspPing/LspPingTlvType.h"
#include "Orv/Assert.h"
#include "Orv/Trace.h"
#include "Wirx/Checksum.h"
#include "Wirx/Ipv4RouterAlertHdr.h"
#include "Wirx/MplsLabelEntry.h"

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingPktGen");

constexpr U16 tlvHdrSize = sizeof(LspPingTlvHdr);
constexpr U16 labelEntrySize = 4;

// The rule every TLV and sub-TLV adder follows: `tlvSize` bytes appended
// zeroed, so that reserved and must-be-zero fields need no writing, and
// counted in the tail room, the UDP payload and the TLV being built.
template <class Record> Record *appendTlv(LspPingPktGen *msgGen, U32 tlvSize) {
  ORV_ASSERT(msgGen->availTailRoom() >= tlvSize);
  U8 *bytes = msgGen->pkt()->append(tlvSize);
  std::memset(bytes, 0, tlvSize);
  msgGen->availTailRoomDec(tlvSize);
  msgGen->udpPayloadLengthInc(static_cast<U16>(tlvSize));
  msgGen->lspPingTlvHdrLengthInc(static_cast<U16>(tlvSize));
  return reinterpret_cast<Record *>(bytes);
}

template <class SubTlv>
SubTlv *appendSubTlv(LspPingPktGen *msgGen, LspPingTargetFecSubTlvType type,
                     U16 length) {
  auto *subTlv = appendTlv<SubTlv>(msgGen, sizeof(SubTlv));
  subTlv->typeNbo.valueIs(U16(type));
  subTlv->lengthNbo.valueIs(length);
  return subTlv;
}

// The fixed part of a Downstream Mapping TLV value in either layout.
template <class DsTlv>
void writeDsFixed(DsTlv *ds, U16 mtu, LspPingAddrType addrType, U8 dsFlags,
                  LspPingMultipathType multipathType, U8 depthLimit,
                  U16 multipathLength) {
  ds->mtu.valueIs(mtu);
  ds->addrType = U8(addrType);
  ds->dsFlags = dsFlags;
  ds->multipathType = U8(multipathType);
  ds->depthLimit = depthLimit;
  ds->multipathLength.valueIs(multipathLength);
}

} // namespace

void LspPingMultipathBitsetBytes::copyTo(U8 *out) const {
  for (const auto &entry : bitset_.bitset) {
    if (entry.index < bitset_.size) {
      out[entry.index] = entry.value;
    }
  }
}

LspPingPktGen::LspPingPktGen(Orv::Ptr<Wirx::Pkt> pkt)
    : pkt_(std::move(pkt)), offset_(pkt_->frontBytes()) {}

void LspPingPktGen::initializedIs(bool initialized) {
  if (initialized_ == initialized) {
    return;
  }
  initialized_ = initialized;
  if (initialized_) {
    handleInitialized();
  }
}

void LspPingPktGen::handleInitialized() {
  totalTailRoomIs(pkt_->tailroom());
  availTailRoomIs(pkt_->tailroom());
  ORV_TRACE(trace, 8, "LspPingPktGen::handleInitialized() tail room ",
            availTailRoom_);
}

void LspPingPktGen::closeOpenTlv() {
  if (lspPingTlvHdr_ != nullptr) {
    lspPingTlvHdr_->lengthNbo.valueIs(lspPingTlvHdrLength_);
  }
}

U16 LspPingPktGen::tailOffset() const {
  return static_cast<U16>(pkt_->frontBytes());
}

template <class Hdr> Hdr *LspPingPktGen::appendHdr() {
  availTailRoomDec(sizeof(Hdr));
  return pkt_->appendAs<Hdr>();
}

void LspPingPktGen::addEtherHdr(const Wirx::EthAddr &dst,
                                const Wirx::EthAddr &src, U16 ethType) {
  ORV_ASSERT(totalTailRoom() == availTailRoom());
  ethHeaderOffset_ = tailOffset();
  ethHeader_ = appendHdr<Wirx::EthHdr>();
  ethHeaderLength_ = sizeof(Wirx::EthHdr);
  ethHeader_->dstIs(dst);
  ethHeader_->srcIs(src);
  ethHeader_->etherTypeIs(ethType);
}

void LspPingPktGen::addMplsHdr(U32 label, U8 tc, bool bos, U8 ttl) {
  if (mplsHeader_ == nullptr) {
    mplsHeaderOffset_ = tailOffset();
  }
  auto *entry = appendHdr<Wirx::U32Nbo>();
  entry->valueIs((label << 12) + ((U32(tc) << 9) & 0xE00) + (U32(bos) << 8) +
                 ttl);
  if (mplsHeader_ == nullptr) {
    mplsHeader_ = entry;
  }
  mplsHeaderLength_ += labelEntrySize;
}

void LspPingPktGen::addIpHdr(Wirx::IpAddr src, Wirx::IpAddr dst, U8 ttl,
                             U8 proto) {
  // The texts of these assertions are read by people and tests alike; the
  // spacing inside sizeof is part of them.
  // clang-format off
  ORV_ASSERT(availTailRoom() > sizeof( Wirx::IpHdr ));
  // clang-format on
  ORV_ASSERT(udpHeader_ == NULL);
  ORV_ASSERT(lspPingHdr_ == NULL);
  ipHeaderOffset_ = tailOffset();
  auto *withOption = appendHdr<Wirx::Ipv4RouterAlertHdr>();
  ipHeaderLength_ = sizeof(Wirx::Ipv4RouterAlertHdr);
  withOption->init();
  ipHeader_ = &withOption->hdr();
  ipHeader_->tosIs(0);
  ipHeader_->totalLengthIs(ipHeaderLength_);
  ipHeader_->idIs(0);
  ipHeader_->flagsFragmentIs(Wirx::IpHdr::flagDontFragment);
  ipHeader_->ttlIs(ttl);
  ipHeader_->protocolIs(proto);
  ipHeader_->checksumIs(0);
  ipHeader_->srcIs(src);
  ipHeader_->dstIs(dst);
}

void LspPingPktGen::addIp6Hdr(const Wirx::Ip6Addr &src,
                              const Wirx::Ip6Addr &dst, U8 hopLimit,
                              U8 nextHeader) {
  // clang-format off
  ORV_ASSERT(availTailRoom() > sizeof( Wirx::Ip6Hdr ));
  // clang-format on
  ORV_ASSERT(udpHeader_ == NULL);
  ORV_ASSERT(lspPingHdr_ == NULL);
  ipHeaderOffset_ = tailOffset();
  ip6Header_ = appendHdr<Wirx::Ip6Hdr>();
  ipHeaderLength_ = sizeof(Wirx::Ip6Hdr);
  ip6Header_->classFlowIs(0, 0);
  // A placeholder until computeHdrLenChecksum() knows the payload.
  ip6Header_->payloadLengthIs(ipHeaderLength_);
  ip6Header_->nextHeaderIs(nextHeader);
  ip6Header_->hopLimitIs(hopLimit);
  ip6Header_->srcIs(src);
  ip6Header_->dstIs(dst);
}

void LspPingPktGen::addUdpHdr(U16 srcPort, U16 dstPort) {
  // clang-format off
  ORV_ASSERT(availTailRoom() > sizeof( Wirx::UdpHdr ));
  // clang-format on
  ORV_ASSERT(lspPingHdr_ == NULL);
  udpHeaderOffset_ = tailOffset();
  udpHeader_ = appendHdr<Wirx::UdpHdr>();
  udpHeaderLength_ = sizeof(Wirx::UdpHdr);
  udpHeader_->srcPortIs(srcPort);
  udpHeader_->dstPortIs(dstPort);
  udpHeader_->lengthIs(udpHeaderLength_);
  udpHeader_->checksumIs(0);
}

void LspPingPktGen::addLspPingHdr(U16 version, U16 globalFlags, U8 messageType,
                                  U8 replyMode, U8 returnCode, U8 returnSubcode,
                                  U32 senderHandle, U32 sequenceNumber,
                                  U32 tsSentSeconds, U32 tsSentFraction,
                                  U32 tsRcvdSeconds, U32 tsRcvdFraction) {
  ORV_ASSERT(lspPingHdr_ == NULL);
  ORV_ASSERT(udpPayloadLength_ == 0);
  ORV_ASSERT(lspPingTlvHdrLength_ == 0);
  lspPingHdr_ = appendHdr<LspPingHdr>();
  lspPingHdrLength_ = sizeof(LspPingHdr);
  lspPingHdr_->versionNbo.valueIs(version);
  lspPingHdr_->globalFlagsNbo.valueIs(globalFlags);
  lspPingHdr_->messageType = messageType;
  lspPingHdr_->replyMode = replyMode;
  lspPingHdr_->returnCode = returnCode;
  lspPingHdr_->returnSubcode = returnSubcode;
  lspPingHdr_->senderHandleNbo.valueIs(senderHandle);
  lspPingHdr_->sequenceNumberNbo.valueIs(sequenceNumber);
  lspPingHdr_->tsSentSecondsNbo.valueIs(tsSentSeconds);
  lspPingHdr_->tsSentmSecondsNbo.valueIs(tsSentFraction);
  lspPingHdr_->tsRcvdSecondsNbo.valueIs(tsRcvdSeconds);
  lspPingHdr_->tsRcvdmSecondsNbo.valueIs(tsRcvdFraction);
  udpPayloadLengthIs(lspPingHdrLength_);
  ORV_TRACE(trace, 9, lspPingHdr_->stringValue());
}

void LspPingPktGen::addLspPingTlvHdr(U16 type, U16 length) {
  auto *tlv = appendTlv<LspPingTlvHdr>(this, tlvHdrSize);
  tlv->typeNbo.valueIs(type);
  tlv->lengthNbo.valueIs(length);
  lspPingTlvHdr_ = tlv;
  lspPingTlvHdrLengthIs(0);
}

void LspPingPktGen::addLspPingLdpIpv4SubTlv(Wirx::IpAddr prefix, U8 prefixLen) {
  auto *subTlv = appendSubTlv<LspPingLdpIpv4SubTlv>(
      this, LspPingTargetFecSubTlvType::LDPIpv4, 5);
  subTlv->ipPrefix.valueIs(prefix.value());
  subTlv->prefixLen = prefixLen;
}

void LspPingPktGen::addLspPingRsvpIpv4SubTlv(Wirx::IpAddr destination,
                                             U16 tunnelId,
                                             Wirx::IpAddr extendedTunnelId,
                                             Wirx::IpAddr senderAddress,
                                             U16 lspId) {
  auto *subTlv = appendSubTlv<LspPingRsvpIpv4SubTlv>(
      this, LspPingTargetFecSubTlvType::RSVPIpv4Lsp, 20);
  subTlv->destination.valueIs(destination.value());
  subTlv->tunnelId.valueIs(tunnelId);
  subTlv->extendedTunnelId.valueIs(extendedTunnelId.value());
  subTlv->senderAddress.valueIs(senderAddress.value());
  subTlv->lspId.valueIs(lspId);
}

void LspPingPktGen::addLspPingSrIpv4SubTlv(Wirx::IpAddr prefix, U8 prefixLen,
                                           LspPingSrIgpProtocol protocol) {
  auto *subTlv = appendSubTlv<LspPingSrIpv4SubTlv>(
      this, LspPingTargetFecSubTlvType::SRIpv4, 6);
  subTlv->ipPrefix.valueIs(prefix.value());
  subTlv->prefixLen = prefixLen;
  subTlv->protocol = U8(protocol);
}

void LspPingPktGen::addLspPingSrIpv6SubTlv(const Wirx::Ip6Addr &prefix,
                                           U8 prefixLen,
                                           LspPingSrIgpProtocol protocol) {
  auto *subTlv = appendSubTlv<LspPingSrIpv6SubTlv>(
      this, LspPingTargetFecSubTlvType::SRIpv6, 18);
  subTlv->ipPrefix.valueIs(prefix);
  subTlv->prefixLen = prefixLen;
  subTlv->protocol = U8(protocol);
}

void LspPingPktGen::addLspPingNilFecSubTlv(U32 label) {
  auto *subTlv = appendSubTlv<LspPingNilFecSubTlv>(
      this, LspPingTargetFecSubTlvType::NilFec, 4);
  subTlv->labelField.labelIs(label);
}

void LspPingPktGen::addLspPingIntfAndLabelStackTlv(
    LspPingAddrType addrType, const Wirx::IpGenAddr &addr, const Wirx::IntfId &,
    const Wirx::MplsLabelStack &labelStack) {
  ORV_ASSERT(labelStack.valid());
  switch (addrType) {
  case LspPingAddrType::ipv4Numbered:
  case LspPingAddrType::ipv4Unnumbered:
    ORV_ASSERT(addr.af() == Wirx::ipv4());
    break;
  case LspPingAddrType::ipv6Numbered:
    ORV_ASSERT(addr.af() == Wirx::ipv6());
    break;
  case LspPingAddrType::ipv6Unnumbered:
    ORV_ASSERT(false && "IPv6 unnumbered interface and label stack TLVs"
                        " are currently not supported");
    break;
  default:
    ORV_ASSERT(false && "Undefined address type");
    break;
  }
  closeOpenTlv();
  const U16 ipAndIntfLen =
      U16(addr.af() == Wirx::ipv4()
              ? LspPingIntfAndLabelStackTlvIpAndIntfLen::ipv4IfLen
              : LspPingIntfAndLabelStackTlvIpAndIntfLen::ipv6NumberedIfLen);
  const U16 tlvSize = static_cast<U16>(tlvHdrSize + ipAndIntfLen +
                                       labelEntrySize * labelStack.size());
  auto *tlv = appendTlv<LspPingTlvHdr>(this, tlvSize);
  tlv->typeNbo.valueIs(U16(LspPingTlvType::IntfAndLabelStack));
  tlv->lengthNbo.valueIs(static_cast<U16>(tlvSize - tlvHdrSize));
  U8 *value = reinterpret_cast<U8 *>(tlv + 1);
  reinterpret_cast<LspPingIntfAndLabelStackHdr *>(value)->addrType =
      U8(addrType);
  U8 *entry = value + ipAndIntfLen;
  for (U32 i = 0; i < labelStack.size(); ++i, entry += labelEntrySize) {
    labelStack[i].toNbo(entry);
  }
  lspPingTlvHdr_ = tlv;
  lspPingTlvHdrLengthIs(static_cast<U16>(tlvSize - tlvHdrSize));
}

void LspPingPktGen::addLspPingDownstreamMappingTlv(
    U16 mtu, LspPingAddrType addrType, U8 dsFlags,
    const Wirx::IpGenAddr &dsIpAddr, const Wirx::IpGenAddr &dsIntfAddr,
    LspPingMultipathType multipathType, U8 depthLimit,
    const Wirx::IpGenAddr &dsMultipathBaseAddr,
    LspPingMultipathBitsetBytes dsMultipathBitset,
    const LspPingDownstreamLabelStack &labelStack) {
  ORV_ASSERT(labelStack.valid());
  ORV_ASSERT(dsIpAddr.af() == dsIntfAddr.af());
  switch (addrType) {
  case LspPingAddrType::ipv4Numbered:
  case LspPingAddrType::ipv4Unnumbered:
    ORV_ASSERT(dsIpAddr.af() == Wirx::ipv4());
    break;
  case LspPingAddrType::ipv6Numbered:
    ORV_ASSERT(dsIpAddr.af() == Wirx::ipv6());
    break;
  case LspPingAddrType::ipv6Unnumbered:
    ORV_ASSERT(false && "IPv6 unnumbered downstream mapping TLVs are currently"
                        " not supported.");
    break;
  default:
    ORV_ASSERT(false && "Undefined address type");
    break;
  }
  const bool ipv4 = dsIpAddr.af() == Wirx::ipv4();
  const U32 baseAddrSize = ipv4 ? 4 : 16;
  U32 multipathLength = 0;
  switch (multipathType) {
  case LspPingMultipathType::noMultipath:
    ORV_ASSERT(dsMultipathBitset.size() == 0);
    break;
  case LspPingMultipathType::maskedIpSetMultipath:
    ORV_ASSERT(dsMultipathBitset.size() % 4 == 0);
    multipathLength = baseAddrSize + dsMultipathBitset.size();
    break;
  default:
    ORV_ASSERT(false && "Only no multipath, and masked IP set multipath are "
                        "supported");
    break;
  }
  closeOpenTlv();
  const U32 ipAndIntfLen =
      U32(ipv4 ? LspPingDownstreamMappingTlvIpAndIntfLen::ipv4DsLen
               : LspPingDownstreamMappingTlvIpAndIntfLen::ipv6NumberedDsLen);
  const U32 tlvSize = tlvHdrSize + ipAndIntfLen + multipathLength +
                      U32{labelEntrySize} * labelStack.size;
  auto *tlv = appendTlv<LspPingTlvHdr>(this, tlvSize);
  const U16 length = static_cast<U16>(tlvSize - tlvHdrSize);
  tlv->typeNbo.valueIs(U16(LspPingTlvType::DownstreamMapping));
  tlv->lengthNbo.valueIs(length);
  U8 *value = reinterpret_cast<U8 *>(tlv + 1);
  if (ipv4) {
    auto *ds = reinterpret_cast<LspPingDownstreamMappingIpv4Tlv *>(value);
    writeDsFixed(ds, mtu, addrType, dsFlags, multipathType, depthLimit,
                 static_cast<U16>(multipathLength));
    ds->dsIpAddr.valueIs(dsIpAddr.v4().value());
    ds->dsIntfAddr.valueIs(dsIntfAddr.v4().value());
  } else {
    auto *ds = reinterpret_cast<LspPingDownstreamMappingIpv6Tlv *>(value);
    writeDsFixed(ds, mtu, addrType, dsFlags, multipathType, depthLimit,
                 static_cast<U16>(multipathLength));
    ds->dsIpAddr.valueIs(dsIpAddr.v6());
    ds->dsIntfAddr.valueIs(dsIntfAddr.v6());
  }
  U8 *multipath = value + ipAndIntfLen;
  if (multipathLength != 0) {
    if (ipv4) {
      dsMultipathBaseAddr.v4().toNbo(multipath);
    } else {
      dsMultipathBaseAddr.v6().toNbo(multipath);
    }
    dsMultipathBitset.copyTo(multipath + baseAddrSize);
  }
  U8 *entry = multipath + multipathLength;
  for (U8 i = 0; i < labelStack.size; ++i, entry += labelEntrySize) {
    const LspPingDownstreamLabelEntry &label = labelStack.labelEntry[i];
    entry[0] = label.v0;
    entry[1] = label.v1;
    entry[2] = label.v2;
    entry[3] = label.v3;
  }
  lspPingTlvHdr_ = tlv;
  lspPingTlvHdrLengthIs(length);
}

void LspPingPktGen::computeHdrLenChecksum() {
  closeOpenTlv();
  const U16 udpLength = static_cast<U16>(udpHeaderLength_ + udpPayloadLength_);
  if (udpHeader_ != nullptr) {
    udpHeader_->lengthIs(udpLength);
  }
  // The checksum helpers skip the checksum field, whatever it holds.
  const U8 *udpBytes = reinterpret_cast<const U8 *>(udpHeader_);
  if (ipHeader_ != nullptr) {
    if (udpHeader_ != nullptr) {
      udpHeader_->checksumIs(Wirx::udpChecksumV4(
          ipHeader_->src(), ipHeader_->dst(), udpBytes, udpLength));
    }
    ipHeader_->totalLengthIs(static_cast<U16>(ipHeaderLength_ + udpLength));
    ipHeader_->checksumIs(Wirx::ipv4HeaderChecksum(
        reinterpret_cast<const U8 *>(ipHeader_), ipHeaderLength_));
  } else if (ip6Header_ != nullptr) {
    if (udpHeader_ != nullptr) {
      udpHeader_->checksumIs(Wirx::udpChecksumV6(
          ip6Header_->src(), ip6Header_->dst(), udpBytes, udpLength));
    }
    ip6Header_->payloadLengthIs(udpLength);
  }
  ORV_TRACE(trace, 9, "LspPingPktGen::computeHdrLenChecksum() frame length ",
            pkt_->frontBytes() - offset_, ", UDP payload ", udpPayloadLength_);
}

Orv::Ptr<LspPingPktGen> lspPingPktGenFactory(Orv::Ptr<Wirx::Pkt> pkt) {
  return Orv::make<LspPingPktGen>(std::move(pkt));
}

} // namespace LspPing
