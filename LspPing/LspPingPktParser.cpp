#include "LspPing/LspPingHdrParser.h"
#include "LspPing/LspPingMsgType.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTlvGroupParser.h"
#include "LspPing/LspPingTlvHdr.h"
#include "LspPing/LspPingTlvType.h"
#include "Orv/Trace.h"

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

Orv::Ptr<LspPingHdrParser> lspPingHdrParserFactory(Orv::Ptr<Wirx::Pkt> pkt,
                                                   U32 offset) {
  return Orv::make<LspPingHdrParser>(std::move(pkt), offset);
}

} // namespace LspPing
