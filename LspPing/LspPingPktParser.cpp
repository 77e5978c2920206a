#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingDdmapTlvParser.h"
#include "LspPing/LspPingDownstreamMappingTlvContainer.h"
#include "LspPing/LspPingDownstreamMappingTlvIpAndIntfLen.h"
#include "LspPing/LspPingDownstreamMappingTlvParser.h"
#include "LspPing/LspPingEchoJitterTlvParser.h"
#include "LspPing/LspPingFec128Ipv4SubTlvParser.h"
#include "LspPing/LspPingFecStackChangeSubTlvParser.h"
#include "LspPing/LspPingHdrParser.h"
#include "LspPing/LspPingIntfAndLabelStackTlvContainer.h"
#include "LspPing/LspPingIntfAndLabelStackTlvIpAndIntfLen.h"
#include "LspPing/LspPingIntfAndLabelStackTlvParser.h"
#include "LspPing/LspPingLdpIpv4SubTlvParser.h"
#include "LspPing/LspPingMsgType.h"
#include "LspPing/LspPingMultipathSubTlvParser.h"
#include "LspPing/LspPingMultipathType.h"
#include "LspPing/LspPingNilFecSubTlvParser.h"
#include "LspPing/LspPingNodeAddrSubTlvParser.h"
#include "LspPing/LspPingOpaqueValGenSubTlvParser.h"
#include "LspPing/LspPingOpaqueValSGSubTlvParser.h"
#include "LspPing/LspPingP2mpFecStackSubTlvParser.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingRsvpIpv4SubTlvParser.h"
#include "LspPing/LspPingSrIpv4SubTlvParser.h"
#include "LspPing/LspPingSrIpv6SubTlvParser.h"
#include "LspPing/LspPingTargetFecSubTlvType.h"
#include "LspPing/LspPingTargetFecTlvParser.h"
#include "LspPing/LspPingTlvGroupParser.h"
#include "LspPing/LspPingTlvHdr.h"
#include "LspPing/LspPingTlvType.h"
#include "Orv/Trace.h"
#include "Wirx/MplsLabelEntry.h"

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingPktParser");

constexpr U32 lspPingHdrSize = sizeof(LspPingHdr);
constexpr U32 tlvHdrSize = sizeof(LspPingTlvHdr);
// Types from here on may be skipped by a receiver that does not know them.
constexpr U32 firstOptionalTlvType = 32768;

} // namespace

LspPingTlvGroupParser::LspPingTlvGroupParser(Orv::Ptr<Wirx::Pkt> pkt,
                                             U32 offset, U32 size)
    : pkt_(std::move(pkt)), offset_(offset), size_(size) {}

const TlvTypeOffsetColl *LspPingTlvGroupParser::tlvTypeOffset(U16 type) const {
  for (std::size_t i = 0; i < tlvTypeOffset_.size(); ++i) {
    if (tlvTypeOffset_[i].type() == type) {
      return &tlvTypeOffset_[i];
    }
  }
  return nullptr;
}

void LspPingTlvGroupParser::fault(const std::string &reason) {
  reason_ = reason;
  ORV_TRACE(trace, 5, reason_);
}

void LspPingTlvGroupParser::tlvIndexIs(U16 type, U32 position) {
  for (std::size_t i = 0; i < tlvTypeOffset_.size(); ++i) {
    if (tlvTypeOffset_[i].type() == type) {
      tlvTypeOffset_[i].offsetIs(position);
      tlvOffset_.push_back(position);
      return;
    }
  }
  tlvTypeOffset_.push_back(TlvTypeOffsetColl(type));
  tlvTypeOffset_[tlvTypeOffset_.size() - 1].offsetIs(position);
  tlvOffset_.push_back(position);
}

void LspPingTlvGroupParser::parseTlvGroup() {
  const U64 frontBytes = pkt_->frontBytes();
  ORV_TRACE(trace, 6, "Parse packet frontBytes: ", frontBytes,
            ", offset: ", offset_, ", size ", size_);
  if (size_ == 0) {
    valid_ = true;
    return;
  }
  if (frontBytes < U64(offset_) + size_) {
    fault("Packet is too small, size: " + std::to_string(frontBytes));
    return;
  }
  if (frontBytes < U64(offset_) + tlvHdrSize) {
    fault("Msg/Tlv header is corrupted");
    return;
  }
  const U8 *data = pkt_->data();
  U32 position = offset_;
  U32 total = 0;
  for (U32 index = 0;; ++index) {
    const auto *tlv = reinterpret_cast<const LspPingTlvHdr *>(data + position);
    // A length of 65529 or more wraps the 16-bit total to zero.
    const U16 totalLength = static_cast<U16>(tlv->totalLength());
    if (totalLength == 0) {
      fault("Invalid totalLength in TLV hdr");
      return;
    }
    total += totalLength;
    if (total > size_) {
      fault("Msg/Tlv is corrupted/truncated");
      return;
    }
    tlvIndexIs(tlv->type(), position);
    ORV_TRACE(trace, 6, "   Msg/TLV ", index, ": offset ", position, ", size ",
              totalLength);
    position += totalLength;
    if (total == size_) {
      valid_ = true;
      return;
    }
    if (U64(position) + tlvHdrSize > frontBytes) {
      fault("Msg/Tlv header is corrupted");
      return;
    }
  }
}

Orv::Ptr<LspPingTlvGroupParser>
lspPingTlvGroupParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset, U32 size) {
  return Orv::make<LspPingTlvGroupParser>(std::move(pkt), offset, size);
}

LspPingPduParser::LspPingPduParser(Orv::Ptr<Wirx::Pkt> pkt, U32 offset)
    : pkt_(std::move(pkt)), offset_(offset) {}

void LspPingPduParser::initializedIs(bool initialized) {
  if (initialized_ == initialized) {
    return;
  }
  initialized_ = initialized;
  if (initialized_) {
    parse();
  }
}

void LspPingPduParser::fault(const std::string &reason) {
  reason_ = reason;
  valid_ = false;
  ORV_TRACE(trace, 5, reason_);
}

void LspPingPduParser::parse() {
  const U32 frontBytes = pkt_->frontBytes();
  if (U64(frontBytes) < U64(offset_) + lspPingHdrSize) {
    fault("LspPingHdr is corrupted");
    return;
  }
  const auto *hdr =
      reinterpret_cast<const LspPingHdr *>(pkt_->data() + offset_);
  if (!hdr->valid()) {
    fault("Invalid lspPingHdr");
    return;
  }
  lspPingHdr_ = hdr;
  const U32 tlvStart = offset_ + lspPingHdrSize;
  tlvGroupParser_.emplace(pkt_, tlvStart, frontBytes - tlvStart);
  tlvGroupParser_->parseTlvGroup();
  if (!tlvGroupParser_->valid()) {
    // The group parser has traced its fault already.
    reason_ = tlvGroupParser_->reason();
    return;
  }
  tlvSupported_ = hasOnlySupportedTlvs();
  if (hdr->messageType == U8(LspPingMsgType::MplsEchoRequest) &&
      !tlvGroupParser_->tlvTypeOffset(U16(LspPingTlvType::TargetFecStack))) {
    fault("Request message must have Target Fec TLV");
    return;
  }
  valid_ = true;
}

bool LspPingPduParser::hasOnlySupportedTlvs() const {
  const U8 *data = pkt_->data();
  for (U32 i = 0; i < tlvGroupParser_->tlvNum(); ++i) {
    const U16 type =
        reinterpret_cast<const LspPingTlvHdr *>(data + tlvOffset(i))->type();
    if (type < firstOptionalTlvType &&
        type != U16(LspPingTlvType::TargetFecStack) &&
        type != U16(LspPingTlvType::DownstreamMapping)) {
      return false;
    }
  }
  return true;
}

Orv::Ptr<LspPingPduParser> lspPingPduParserFactory(Orv::Ptr<Wirx::Pkt> pkt,
                                                   U32 offset) {
  return Orv::make<LspPingPduParser>(std::move(pkt), offset);
}

template <class Parser>
Orv::Ptr<Parser> makeRecordParser(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return Orv::make<Parser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingHdrParser> lspPingHdrParserFactory(Orv::Ptr<Wirx::Pkt> pkt,
                                                   U32 offset) {
  return makeRecordParser<LspPingHdrParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingLdpIpv4SubTlvParser>
lspPingLdpIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingLdpIpv4SubTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingRsvpIpv4SubTlvParser>
lspPingRsvpIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingRsvpIpv4SubTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingFec128Ipv4SubTlvParser>
lspPingFec128Ipv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingFec128Ipv4SubTlvParser>(std::move(pkt),
                                                         offset);
}

Orv::Ptr<LspPingSrIpv4SubTlvParser>
lspPingSrIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingSrIpv4SubTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingSrIpv6SubTlvParser>
lspPingSrIpv6SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingSrIpv6SubTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingNilFecSubTlvParser>
lspPingNilFecSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingNilFecSubTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingNodeAddrSubTlvParser>
lspPingNodeAddrSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingNodeAddrSubTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingP2mpFecStackSubTlvParser>
lspPingP2mpFecStackSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingP2mpFecStackSubTlvParser>(std::move(pkt),
                                                           offset);
}

Orv::Ptr<LspPingOpaqueValSGSubTlvParser>
lspPingOpaqueValSGSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingOpaqueValSGSubTlvParser>(std::move(pkt),
                                                          offset);
}

Orv::Ptr<LspPingOpaqueValGenSubTlvParser>
lspPingOpaqueValGenSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingOpaqueValGenSubTlvParser>(std::move(pkt),
                                                           offset);
}

Orv::Ptr<LspPingEchoJitterTlvParser>
lspPingEchoJitterTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingEchoJitterTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingDdmapTlvParser>
lspPingDdmapTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingDdmapTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingMultipathSubTlvParser>
lspPingMultipathSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingMultipathSubTlvParser>(std::move(pkt), offset);
}

Orv::Ptr<LspPingFecStackChangeSubTlvParser>
lspPingFecStackChangeSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return makeRecordParser<LspPingFecStackChangeSubTlvParser>(std::move(pkt),
                                                             offset);
}

LspPingTargetFecTlvParser::LspPingTargetFecTlvParser(Orv::Ptr<Wirx::Pkt> pkt,
                                                     U32 offset)
    : pkt_(std::move(pkt)), offset_(offset) {}

void LspPingTargetFecTlvParser::initializedIs(bool initialized) {
  if (initialized_ == initialized) {
    return;
  }
  initialized_ = initialized;
  if (initialized_) {
    parse();
  }
}

void LspPingTargetFecTlvParser::fault(const std::string &reason) {
  reason_ = reason;
  valid_ = false;
  ORV_TRACE(trace, 5, reason_);
}

void LspPingTargetFecTlvParser::parse() {
  const U32 frontBytes = pkt_->frontBytes();
  // The sub-TLVs are walked to the end of the packet's data, not only to the
  // end of the enclosing TLV.
  const U32 size = frontBytes > offset_ ? frontBytes - offset_ : 0;
  tlvGroupParser_.emplace(pkt_, offset_, size);
  tlvGroupParser_->parseTlvGroup();
  if (!tlvGroupParser_->valid()) {
    reason_ = tlvGroupParser_->reason();
    return;
  }
  if (!enclosedInTargetFecStack()) {
    fault("TLV type is not TargetFecStack");
    return;
  }
  keepKnownSubTlvs();
  chooseResult();
  valid_ = true;
}

bool LspPingTargetFecTlvParser::enclosedInTargetFecStack() const {
  if (offset_ < sizeof(LspPingTlvHdr) || offset_ > pkt_->frontBytes()) {
    return false;
  }
  const auto *tlv = reinterpret_cast<const LspPingTlvHdr *>(
      pkt_->data() + offset_ - sizeof(LspPingTlvHdr));
  return tlv->type() == U16(LspPingTlvType::TargetFecStack);
}

// A record is kept only when all its bytes lie in the packet: the walk below
// advances by fixed record sizes, so it may land on bytes that the group
// parser never checked.
template <class Record>
const Record *LspPingTargetFecTlvParser::recordAt(U32 position) const {
  if (U64(position) + sizeof(Record) > pkt_->frontBytes()) {
    return nullptr;
  }
  return reinterpret_cast<const Record *>(pkt_->data() + position);
}

// Advances by the size of each known record rather than by the sub-TLV's
// own length, and not at all past an unknown type: every sub-TLV behind the
// first unknown one is then ignored. Peers rely on exactly this reading.
void LspPingTargetFecTlvParser::keepKnownSubTlvs() {
  U32 position = offset_;
  for (U32 i = 0; i < tlvGroupParser_->tlvNum(); ++i) {
    if (U64(position) + sizeof(LspPingTlvHdr) > pkt_->frontBytes()) {
      return;
    }
    const auto *tlv =
        reinterpret_cast<const LspPingTlvHdr *>(pkt_->data() + position);
    switch (LspPingTargetFecSubTlvType(tlv->type())) {
    case LspPingTargetFecSubTlvType::LDPIpv4:
      ldpIpv4SubTlv_ = recordAt<LspPingLdpIpv4SubTlv>(position);
      position += sizeof(LspPingLdpIpv4SubTlv);
      break;
    case LspPingTargetFecSubTlvType::RSVPIpv4Lsp:
      rsvpIpv4SubTlv_ = recordAt<LspPingRsvpIpv4SubTlv>(position);
      position += sizeof(LspPingRsvpIpv4SubTlv);
      break;
    case LspPingTargetFecSubTlvType::FEC128Pseudowire:
      fec128Ipv4SubTlv_ = recordAt<LspPingFec128Ipv4SubTlv>(position);
      position += sizeof(LspPingFec128Ipv4SubTlv);
      break;
    case LspPingTargetFecSubTlvType::NilFec:
      nilFecSubTlv_ = recordAt<LspPingNilFecSubTlv>(position);
      position += sizeof(LspPingNilFecSubTlv);
      break;
    case LspPingTargetFecSubTlvType::SRIpv4:
      srIpv4SubTlv_ = recordAt<LspPingSrIpv4SubTlv>(position);
      position += sizeof(LspPingSrIpv4SubTlv);
      break;
    case LspPingTargetFecSubTlvType::SRIpv6:
    case LspPingTargetFecSubTlvType::SRIpv6Deprecated:
      srIpv6SubTlv_ = recordAt<LspPingSrIpv6SubTlv>(position);
      position += sizeof(LspPingSrIpv6SubTlv);
      break;
    default:
      break;
    }
  }
}

namespace {

// A prefix from received bytes; none when the length does not fit the
// family (a sub-TLV that names no prefix is simply not chosen).
std::optional<Wirx::IpGenPrefix> prefixOf(const Wirx::IpGenAddr &addr,
                                          U8 length) {
  if (length > Wirx::IpGenPrefix::maxLength(addr.af())) {
    return std::nullopt;
  }
  return Wirx::IpGenPrefix(addr, length);
}

} // namespace

void LspPingTargetFecTlvParser::chooseResult() {
  if (ldpIpv4SubTlv_ && ldpIpv4SubTlv_->valid()) {
    if (auto prefix = prefixOf(Wirx::IpAddr(ldpIpv4SubTlv_->ipPrefix.value()),
                               ldpIpv4SubTlv_->prefixLen)) {
      targetFec_ = *prefix;
      return;
    }
  }
  if (rsvpIpv4SubTlv_ && rsvpIpv4SubTlv_->valid()) {
    const LspPingRsvpIpv4SubTlv &rsvp = *rsvpIpv4SubTlv_;
    rsvpSpId_ = Rsvp::RsvpSpId{
        Wirx::IpAddr(rsvp.destination.value()), rsvp.tunnelId.value(),
        Wirx::IpAddr(rsvp.extendedTunnelId.value()), rsvp.lspId.value()};
    rsvpSenderAddr_ = Wirx::IpAddr(rsvp.senderAddress.value());
    return;
  }
  if (fec128Ipv4SubTlv_ && fec128Ipv4SubTlv_->valid()) {
    const LspPingFec128Ipv4SubTlv &pw = *fec128Ipv4SubTlv_;
    pwInfo_ = LspPingPwInfo(Wirx::IpAddr(pw.senderAddr.value()),
                            Wirx::IpAddr(pw.receiverAddr.value()),
                            pw.pwId.value(), pw.pwType.value());
    return;
  }
  if (srIpv4SubTlv_ && srIpv4SubTlv_->valid()) {
    if (auto prefix = prefixOf(Wirx::IpAddr(srIpv4SubTlv_->ipPrefix.value()),
                               srIpv4SubTlv_->prefixLen)) {
      targetFec_ = *prefix;
      return;
    }
  }
  if (srIpv6SubTlv_ && srIpv6SubTlv_->valid()) {
    if (auto prefix = prefixOf(srIpv6SubTlv_->ipPrefix.value(),
                               srIpv6SubTlv_->prefixLen)) {
      targetFec_ = *prefix;
    }
  }
}

Orv::Ptr<LspPingTargetFecTlvParser>
lspPingTargetFecTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return Orv::make<LspPingTargetFecTlvParser>(std::move(pkt), offset);
}

namespace {

// The bytes of a TLV's value in front of its label entries or multipath
// information, by address type; 0 for a type the TLV cannot carry.
U32 intfAndLabelStackFixedLength(U8 addrType) {
  switch (LspPingAddrType(addrType)) {
  case LspPingAddrType::ipv4Numbered:
  case LspPingAddrType::ipv4Unnumbered:
    return U32(LspPingIntfAndLabelStackTlvIpAndIntfLen::ipv4IfLen);
  case LspPingAddrType::ipv6Numbered:
    return U32(LspPingIntfAndLabelStackTlvIpAndIntfLen::ipv6NumberedIfLen);
  case LspPingAddrType::ipv6Unnumbered:
    return U32(LspPingIntfAndLabelStackTlvIpAndIntfLen::ipv6UnnumberedIfLen);
  }
  return 0;
}

U32 downstreamMappingFixedLength(U8 addrType) {
  switch (LspPingAddrType(addrType)) {
  case LspPingAddrType::ipv4Numbered:
  case LspPingAddrType::ipv4Unnumbered:
    return U32(LspPingDownstreamMappingTlvIpAndIntfLen::ipv4DsLen);
  case LspPingAddrType::ipv6Numbered:
    return U32(LspPingDownstreamMappingTlvIpAndIntfLen::ipv6NumberedDsLen);
  case LspPingAddrType::ipv6Unnumbered:
    return U32(LspPingDownstreamMappingTlvIpAndIntfLen::ipv6UnnumberedDsLen);
  }
  return 0;
}

// The TLV header at `offset`, or null when the TLV with its whole value does
// not lie in the packet.
const LspPingTlvHdr *wholeTlvAt(const Wirx::Pkt &pkt, U32 offset) {
  if (U64(offset) + sizeof(LspPingTlvHdr) > pkt.frontBytes()) {
    return nullptr;
  }
  const auto *tlv =
      reinterpret_cast<const LspPingTlvHdr *>(pkt.data() + offset);
  if (U64(offset) + sizeof(LspPingTlvHdr) + tlv->length() > pkt.frontBytes()) {
    return nullptr;
  }
  return tlv;
}

} // namespace

void LspPingIntfAndLabelStackTlvParser::initializedIs(bool initialized) {
  if (initialized_ == initialized) {
    return;
  }
  initialized_ = initialized;
  if (initialized_) {
    parse();
  }
}

void LspPingIntfAndLabelStackTlvParser::fault(const std::string &reason) {
  reason_ = reason;
  valid_ = false;
  ORV_TRACE(trace, 5, reason_);
}

void LspPingIntfAndLabelStackTlvParser::parse() {
  const LspPingTlvHdr *tlv = wholeTlvAt(*pkt_, offset_);
  if (tlv && tlv->type() != U16(LspPingTlvType::IntfAndLabelStack)) {
    fault("TLV type is not IntfAndLabelStack");
    return;
  }
  if (!tlv || tlv->length() < 12) {
    fault("IntfAndLabelStack TLV is corrupted");
    return;
  }
  const U8 *value = reinterpret_cast<const U8 *>(tlv + 1);
  const U32 fixedLength = intfAndLabelStackFixedLength(value[0]);
  if (fixedLength == 0) {
    fault("Invalid address type in IntfAndLabelStack TLV");
    return;
  }
  // Our senders never use the unnumbered IPv6 form and its fixed part has no
  // view to read it through: refuse it rather than guess at its fields.
  if (value[0] == U8(LspPingAddrType::ipv6Unnumbered)) {
    fault("Unnumbered IPv6 address type in IntfAndLabelStack TLV is not "
          "supported");
    return;
  }
  if (tlv->length() < fixedLength) {
    fault("IntfAndLabelStack TLV is corrupted");
    return;
  }
  const U32 labelCount = (tlv->length() - fixedLength) / 4;
  if (labelCount > Wirx::MplsLabelStack::capacity) {
    fault("IntfAndLabelStack TLV has more labels than supported");
    return;
  }
  auto view = lspPingIntfAndLabelStackTlvContainerFactory();
  view->tryCastToTlv(value, tlv->length());
  Wirx::MplsLabelStack labels;
  for (U32 i = 0; i < labelCount; ++i) {
    labels.push(Wirx::MplsLabelEntry::fromNbo(value + fixedLength + 4 * i));
  }
  intfAndLabelStackInfo_ = LspPingIntfAndLabelStackInfo(
      view->getAddr(), Wirx::IntfId(view->getIntf().stringValue()), labels,
      true);
  valid_ = true;
}

Orv::Ptr<LspPingIntfAndLabelStackTlvParser>
lspPingIntfAndLabelStackTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return Orv::make<LspPingIntfAndLabelStackTlvParser>(std::move(pkt), offset);
}

void LspPingDownstreamMappingTlvParser::initializedIs(bool initialized) {
  if (initialized_ == initialized) {
    return;
  }
  initialized_ = initialized;
  if (initialized_) {
    parse();
  }
}

void LspPingDownstreamMappingTlvParser::fault(const std::string &reason) {
  reason_ = reason;
  valid_ = false;
  ORV_TRACE(trace, 5, reason_);
}

void LspPingDownstreamMappingTlvParser::parse() {
  const LspPingTlvHdr *tlv = wholeTlvAt(*pkt_, offset_);
  if (tlv && tlv->type() != U16(LspPingTlvType::DownstreamMapping)) {
    fault("TLV type is not DownstreamMapping");
    return;
  }
  if (!tlv || tlv->length() < 16 || tlv->length() % 4 != 0) {
    fault("DownstreamMapping TLV is corrupted");
    return;
  }
  const U8 *value = reinterpret_cast<const U8 *>(tlv + 1);
  const U32 length = tlv->length();
  const U8 addrType = value[2];
  const U32 fixedLength = downstreamMappingFixedLength(addrType);
  if (fixedLength == 0) {
    fault("Invalid address type in DownstreamMapping TLV");
    return;
  }
  // See the interface and label stack parser: no view reads this form.
  if (addrType == U8(LspPingAddrType::ipv6Unnumbered)) {
    fault("Unnumbered IPv6 address type in DownstreamMapping TLV is not "
          "supported");
    return;
  }
  // Checked before the multipath length is read: it sits at the end of the
  // fixed part.
  if (length < fixedLength) {
    fault("DownstreamMapping multipath / label stack is corrupted");
    return;
  }
  auto view = lspPingDownstreamMappingTlvContainerFactory();
  view->tryCastToTlv(value, length);
  const U16 multipathLength = view->getMultipathLength();
  if (length < multipathLength + fixedLength || multipathLength % 4 != 0) {
    fault("DownstreamMapping multipath / label stack is corrupted");
    return;
  }
  const U32 labelCount = (length - fixedLength - multipathLength) / 4;
  if (labelCount > 255) {
    fault("DownstreamMapping TLV has more labels than supported");
    return;
  }
  LspPingDownstreamMappingInfo &info = downstreamMappingInfo_;
  info = LspPingDownstreamMappingInfo();
  if (!readMultipath(value + fixedLength, multipathLength, *view)) {
    return;
  }
  info.mtu = view->getMtu();
  info.addrType = addrType;
  info.dsFlags = view->getDsFlags();
  info.dsIpAddr = view->getDsIpAddr();
  info.dsIntfAddr = view->getDsIntfAddr();
  info.multipathType = view->getMultipathType();
  info.depthLimit = view->getDepthLimit();
  const U8 *labels = value + fixedLength + multipathLength;
  for (U32 i = 0; i < labelCount; ++i) {
    const U8 *entry = labels + 4 * i;
    info.labelStack.labelEntryIs(
        U8(i),
        LspPingDownstreamLabelEntry(entry[0], entry[1], entry[2], entry[3]));
  }
  info.labelStack.size = U8(labelCount);
  info.valid = true;
  valid_ = true;
}

bool LspPingDownstreamMappingTlvParser::readMultipath(
    const U8 *multipath, U16 length,
    const LspPingDownstreamMappingTlvContainer &view) {
  LspPingDownstreamMappingInfo &info = downstreamMappingInfo_;
  switch (LspPingMultipathType(view.getMultipathType())) {
  case LspPingMultipathType::noMultipath:
    if (length != 0) {
      fault("DownstreamMapping multipath length must be 0");
      return false;
    }
    return true;
  case LspPingMultipathType::ipMultipath:
    fault("IP address multipath is not supported");
    return false;
  case LspPingMultipathType::ipRangeMultipath:
    fault("IP address range multipath is not supported");
    return false;
  case LspPingMultipathType::maskedLabelSetMultipath:
    fault("Bit-masked label set multipath is not supported");
    return false;
  case LspPingMultipathType::maskedIpSetMultipath:
    break;
  default:
    // Undefined forms are skipped unread.
    return true;
  }
  const bool ipv4 = view.isIpv4();
  const U32 baseLength = ipv4 ? 4 : 16;
  if (length < (ipv4 ? 8 : 20)) {
    fault(std::string("DownstreamMapping multipath length is too short for ") +
          (ipv4 ? "IPv4.  " : "IPv6.  ") + std::to_string(length) +
          (ipv4 ? " < 8" : " < 20"));
    return false;
  }
  info.dsMultipathBaseAddr =
      ipv4 ? Wirx::IpGenAddr(Wirx::IpAddr::fromNbo(multipath))
           : Wirx::IpGenAddr(Wirx::Ip6Addr::fromNbo(multipath));
  info.dsMultipathBitset = LspPingMultipathBitset(length - baseLength);
  for (U32 i = baseLength; i < length; ++i) {
    info.dsMultipathBitset.bitsetIs(i - baseLength, multipath[i]);
  }
  return true;
}

Orv::Ptr<LspPingDownstreamMappingTlvParser>
lspPingDownstreamMappingTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset) {
  return Orv::make<LspPingDownstreamMappingTlvParser>(std::move(pkt), offset);
}

} // namespace LspPing
