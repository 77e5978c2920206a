#include "LspPing/LspPingClientRxSm.h"

#include <cstdint>

#include "LspPing/LspPingDownstreamMappingTlvParser.h"
#include "LspPing/LspPingIntfAndLabelStackTlvParser.h"
#include "LspPing/LspPingTlvType.h"
#include "LspPing/NtpTime.h"
#include "Orv/Trace.h"

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingClientRxSm");

} // namespace

LspPingClientRxSm::LspPingClientRxSm(
    U32 clientId, Orv::Ptr<const LspPingClientConfig> lspPingClientConfig,
    Orv::Ptr<LspPingClientStatus> lspPingClientStatus,
    Orv::Ptr<LspPingMsgPipe> lspPingReplyRxMsgPipe)
    : clientId_(clientId), lspPingClientConfig_(std::move(lspPingClientConfig)),
      lspPingClientStatus_(std::move(lspPingClientStatus)),
      lspPingReplyRxMsgPipe_(std::move(lspPingReplyRxMsgPipe)) {
  watch(*lspPingReplyRxMsgPipe_, LspPingMsgPipe::readableCountAttr,
        [this] { handleRxMsg(); });
  handleInitialized();
}

void LspPingClientRxSm::handleInitialized() { initialized_ = true; }

void LspPingClientRxSm::handleDelete() { initialized_ = false; }

void LspPingClientRxSm::handleRxMsg() {
  ORV_TRACE(trace, 8, clientId_, " handleRxMsg");
  if (!initialized_) {
    return;
  }
  // The arrival time is taken before any parsing, so that the round trip
  // does not include our own work.
  const NtpTimeU64 now = NtpTime::ntpTime();
  const Orv::Ptr<LspPingMsg> msg = lspPingReplyRxMsgPipe_->rxMsg();
  if (!msg) {
    ORV_TRACE(trace, 8, clientId_, " Returning because packet is NULL");
    return;
  }
  Orv::Ptr<const LspPingPduParser> pdu = msg->lspPingPduParser();
  if (!pdu) {
    auto parser = lspPingPduParserFactory(msg->pkt(), msg->offset());
    parser->initializedIs(true);
    pdu = parser;
  }
  if (!pdu->valid()) {
    ORV_TRACE(trace, 8, clientId_, " Returning because packet has an error");
    return;
  }
  const LspPingHdr &hdr = *pdu->lspPingHdr();
  ORV_TRACE(trace, 9, clientId_, " ", hdr.stringValue());
  const NtpTimeU64 sent{hdr.tsSentSeconds(), hdr.tsSentmSeconds()};
  // No check that the stamp lies in the past: a stepped clock or a forged
  // stamp gives a meaningless value, as it would anywhere else. Going through
  // a signed integer keeps that conversion defined: a negative count wraps
  // instead of being undefined, and no elapsed time a 32-bit seconds field
  // can give exceeds the signed range.
  const double micros = NtpTime::elapsedTime(sent, now) * 1e6;
  const U32 roundTrip =
      static_cast<U32>(static_cast<U64>(static_cast<std::int64_t>(micros)));
  LspPingReplyPktInfo record(hdr.sequenceNumber(),
                             LspPingReturnCode(hdr.returnCode),
                             msg->ipGenAddr(), roundTrip);
  if (!replyTlvsRead(*pdu, record)) {
    return;
  }
  lspPingClientStatus_->replyPktInfoIs(U8(hdr.sequenceNumber()), record);
}

// A reply with a malformed TLV is not recorded at all: a partial record
// would read as a reply that carried less than it did.
bool LspPingClientRxSm::replyTlvsRead(const LspPingPduParser &pdu,
                                      LspPingReplyPktInfo &record) const {
  const LspPingTlvGroupParser &group = *pdu.tlvGroupParser();
  if (const TlvTypeOffsetColl *ils =
          group.tlvTypeOffset(U16(LspPingTlvType::IntfAndLabelStack))) {
    auto parser =
        lspPingIntfAndLabelStackTlvParserFactory(pdu.pkt(), ils->offset(0));
    parser->initializedIs(true);
    if (!parser->valid()) {
      ORV_TRACE(trace, 8, clientId_, " Invalid IntfAndLabelStack TLV");
      return false;
    }
    record.intfAndLabelStackInfo = parser->intfAndLabelStackInfo();
  }
  if (const TlvTypeOffsetColl *ds =
          group.tlvTypeOffset(U16(LspPingTlvType::DownstreamMapping))) {
    for (U32 i = 0; i < ds->offsetNum(); ++i) {
      auto parser =
          lspPingDownstreamMappingTlvParserFactory(pdu.pkt(), ds->offset(i));
      parser->initializedIs(true);
      if (!parser->valid()) {
        ORV_TRACE(trace, 8, clientId_, " Invalid DownstreamMapping TLV");
        return false;
      }
      record.downstreamMappingInfoIs(i, parser->downstreamMappingInfo());
    }
  }
  return true;
}

Orv::Ptr<LspPingClientRxSm> lspPingClientRxSmFactory(
    U32 clientId, Orv::Ptr<const LspPingClientConfig> lspPingClientConfig,
    Orv::Ptr<LspPingClientStatus> lspPingClientStatus,
    Orv::Ptr<LspPingMsgPipe> lspPingReplyRxMsgPipe) {
  return Orv::make<LspPingClientRxSm>(clientId, std::move(lspPingClientConfig),
                                      std::move(lspPingClientStatus),
                                      std::move(lspPingReplyRxMsgPipe));
}

} // namespace LspPing
