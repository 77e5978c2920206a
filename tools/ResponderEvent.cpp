#include "tools/ResponderEvent.h"

#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTargetFecTlvParser.h"
#include "LspPing/LspPingTlvHdr.h"
#include "LspPing/LspPingTlvType.h"
#include "tools/ResponderCounters.h"

namespace LspPingTool {

namespace {

std::string rsvpText(const LspPing::LspPingTargetFecTlvParser &fec) {
  const Rsvp::RsvpSpId &id = fec.rsvpSpId();
  return "rsvp=" + id.tunnelDst.stringValue() + "," +
         std::to_string(id.tunnelId) + "," + id.extendedTunnelId.stringValue() +
         "," + fec.rsvpSenderAddr().stringValue() + "," +
         std::to_string(id.lspId);
}

} // namespace

std::string fecText(const MplsUtils::EthPktParser &frame) {
  if (!frame.valid() || !frame.pkt()) {
    return "none";
  }
  auto pdu =
      LspPing::lspPingPduParserFactory(frame.pkt(), frame.udpPayloadOffset());
  pdu->initializedIs(true);
  const auto *tlvs = pdu->valid() ? pdu->tlvGroupParser() : nullptr;
  const auto *stacks = tlvs ? tlvs->tlvTypeOffset(Orv::U16(
                                  LspPing::LspPingTlvType::TargetFecStack))
                            : nullptr;
  if (!stacks) {
    return "none";
  }
  auto fec = LspPing::lspPingTargetFecTlvParserFactory(
      frame.pkt(),
      stacks->offset(0) + Orv::U32(sizeof(LspPing::LspPingTlvHdr)));
  fec->initializedIs(true);
  if (!fec->valid()) {
    return "none";
  }
  const std::string prefix = fec->targetFec().stringValue();
  if (fec->ldpIpv4SubTlv()) {
    return "ldp=" + prefix;
  }
  if (fec->srIpv4SubTlv() || fec->srIpv6SubTlv()) {
    return "sr=" + prefix;
  }
  if (!!fec->rsvpSenderAddr()) {
    return rsvpText(*fec);
  }
  if (!!fec->pwInfo()) {
    const LspPing::LspPingPwInfo &pw = fec->pwInfo();
    return "pw=" + pw.senderAddr.stringValue() + "," +
           pw.receiverAddr.stringValue() + "," + std::to_string(pw.pwId) + "," +
           std::to_string(pw.pwType);
  }
  if (const auto *nil = fec->nilFecSubTlv()) {
    return "nil=" + std::to_string(nil->labelField.label());
  }
  return "none";
}

ResponderEvent ResponderEvent::of(const std::string &intf,
                                  const MplsUtils::EthPktParser &frame) {
  ResponderEvent event;
  event.intf = intf;
  event.labels = frame.labelStack();
  using Layer = MplsUtils::EthPktParser::Layer;
  if (frame.parsedUpTo() >= Layer::ip) {
    event.from = frame.srcIp().stringValue();
    event.fromPort = frame.valid() ? frame.srcPort() : 0;
  } else if (frame.parsedUpTo() >= Layer::ethernet) {
    event.from = frame.ethSrc().stringValue();
  } else {
    event.from = "a frame too short for Ethernet";
  }
  return event;
}

std::string ResponderEvent::text() const {
  std::string text = intf + ": from " + from;
  if (fromPort != 0) {
    text += " port " + std::to_string(fromPort);
  }
  if (!labels.empty()) {
    text += ", labels";
    for (const Wirx::MplsLabelEntry &entry : labels) {
      text += " " + std::to_string(entry.label().value()) +
              "/ttl=" + std::to_string(entry.ttl());
    }
  }
  if (!replied) {
    return text + ": dropped: " + reason;
  }
  return text + ", FEC " + fec + ": " + returnCodeName(returnCode) + " (" +
         std::to_string(returnCode) + ") subcode " +
         std::to_string(returnSubcode) + ", reply to " + to.stringValue() +
         " port " + std::to_string(toPort);
}

nlohmann::ordered_json ResponderEvent::json() const {
  using Json = nlohmann::ordered_json;
  Json labelsJson = Json::array();
  for (const Wirx::MplsLabelEntry &entry : labels) {
    labelsJson.push_back(
        {{"label", entry.label().value()}, {"ttl", entry.ttl()}});
  }
  Json line = {{"event", replied ? "reply" : "drop"},
               {"interface", intf},
               {"from", from},
               {"fromPort", fromPort != 0 ? Json(fromPort) : Json(nullptr)},
               {"labels", labelsJson}};
  if (!replied) {
    line["reason"] = reason;
    line["counter"] = counter;
    return line;
  }
  line["fec"] = fec;
  line["returnCode"] = returnCode;
  line["returnCodeName"] = returnCodeName(returnCode);
  line["returnSubcode"] = returnSubcode;
  line["to"] = {{"address", to.stringValue()}, {"port", toPort}};
  return line;
}

} // namespace LspPingTool
