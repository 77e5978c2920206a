#include "LspPing/LspPingReqHandler.h"

#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingDownstreamMappingTlvParser.h"
#include "LspPing/LspPingMsgType.h"
#include "LspPing/LspPingMultipathType.h"
#include "LspPing/LspPingPktConstants.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingReplyMode.h"
#include "LspPing/LspPingTargetFecTlvParser.h"
#include "LspPing/LspPingTlvType.h"
#include "LspPing/NtpTime.h"
#include "Mesk/ViaIndex.h"
#include "Mpls/LfibLabelAction.h"
#include "Mpls/LfibViaIndexRange.h"
#include "Orv/Assert.h"
#include "Orv/Trace.h"
#include "Wirx/PktManager.h"

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingReqHandler");

constexpr U16 echoPort = LspPingPktConstants::reqDestUdpPort;
constexpr U32 udpHdrSize = 8;
constexpr U32 implicitNullLabel = 3;
constexpr U32 ipv4ExplicitNullLabel = 0;
constexpr U32 ipv6ExplicitNullLabel = 2;
constexpr U32 defaultMtu = 1500;

// The protocol that signalled a route's labels, by the route's source.
LspPingDownstreamSignalingProtocol protocolOfSource(U8 source) {
  switch (source) {
  case 2:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolStatic;
  case 6:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolRsvpTe;
  case 8:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolLdp;
  case 10:
  case 12:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolIsis;
  default:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolUnknown;
  }
}

// Raises the platform's range error for a via index past the last one.
void checkViaIndex(U32 index) {
  static_cast<void>(Mpls::LfibViaIndexRange(index));
}

// A label entry whose label field (the top 20 bits) is `label`.
LspPingDownstreamLabelEntry withLabel(LspPingDownstreamLabelEntry entry,
                                      U32 label) {
  return LspPingDownstreamLabelEntry::fromWord((entry.word() & 0xFFFu) |
                                               (label << 12));
}

// The interface address of a built mapping names no interface, but must be
// of the downstream address's family for the TLV to be written.
Wirx::IpGenAddr unspecifiedOfFamily(const Wirx::IpGenAddr &addr) {
  return addr.isIpv6() ? Wirx::IpGenAddr(Wirx::Ip6Addr())
                       : Wirx::IpGenAddr(Wirx::IpAddr());
}

} // namespace

struct LspPingReqHandler::Request {
  const MplsUtils::EthPktParser &eth;
  Orv::Ptr<Wirx::Pkt> pkt;
  Orv::Ptr<LspPingPduParser> pdu;

  const LspPingHdr &hdr() const { return *pdu->lspPingHdr(); }
};

LspPingReqHandler::LspPingReqHandler(
    Orv::Ptr<const Mpls::Hardware::Status> mplsHwStatus,
    Orv::Ptr<const Mpls::Api::Status> mplsStatus,
    Orv::Ptr<const Mpls::CommonLib> ldpCommonLib,
    Orv::Ptr<const Mpls::LfibStatus> transitLfib,
    Orv::Ptr<const Mesk::Fib::ForwardingStatus> forwardingStatus,
    Orv::Ptr<const Mesk::Fib6::ForwardingStatus> forwarding6Status,
    Orv::Ptr<const Tunnel::TunnelTable::TiLfaTunnelTable> tiLfaTunnelTable,
    Orv::Ptr<Wirx::UdpPam> udpPam4, Orv::Ptr<Wirx::UdpPam> udpPam6,
    Wirx::IpAddr rxIntfIpAddr, Wirx::Ip6Addr rxIntfIp6Addr,
    Orv::Ptr<const Rsvp::RsvpStatus> rsvpStatus,
    Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir)
    : mplsHwStatus_(std::move(mplsHwStatus)),
      mplsStatus_(std::move(mplsStatus)),
      ldpCommonLib_(std::move(ldpCommonLib)),
      transitLfib_(std::move(transitLfib)),
      forwardingStatus_(std::move(forwardingStatus)),
      forwarding6Status_(std::move(forwarding6Status)),
      tiLfaTunnelTable_(std::move(tiLfaTunnelTable)),
      udpPam4_(std::move(udpPam4)), udpPam6_(std::move(udpPam6)),
      rxIntfIpAddr_(rxIntfIpAddr), rxIntfIp6Addr_(rxIntfIp6Addr),
      rsvpStatus_(std::move(rsvpStatus)),
      deviceIntfStatusDir_(std::move(deviceIntfStatusDir)) {}

bool LspPingReqHandler::processPkt(const MplsUtils::EthPktParser &eth) {
  ORV_TRACE(trace, 8,
            "bool LspPing::LspPingReqHandler::processPkt(const "
            "MplsUtils::EthPktParser&)");
  // Counted from where the UDP header starts, whether or not the parser
  // found a whole one there: a frame that carries no UDP has no UDP bytes.
  const U32 udpOffset = eth.udpHdrOffset();
  const U32 udpBytes = udpOffset != 0 ? eth.length() - udpOffset : 0;
  if (udpBytes < udpHdrSize) {
    ORV_TRACE(trace, 0, "Packet UDP payload has incorrect size: ", udpBytes,
              " (expected ", udpHdrSize, ")");
    return false;
  }
  Orv::Ptr<Wirx::Pkt> pkt = eth.pkt();
  if (!pkt) {
    pkt = Wirx::Pkt::copyOf(eth.frame(), eth.length());
    if (!pkt) {
      return false;
    }
  }
  Request request{
      eth, pkt, lspPingPduParserFactory(pkt, eth.udpHdrOffset() + udpHdrSize)};
  request.pdu->initializedIs(true);
  if (!request.pdu->valid()) {
    ORV_TRACE(trace, 9, request.pdu->reason());
    return false;
  }
  if (!passesDropChecks(request)) {
    return false;
  }
  const LspPingRequestInfo info = validateRequestPkt(pkt, eth, *request.pdu);
  if (!labelProgrammed(request, info)) {
    return false;
  }
  ORV_TRACE(trace, 1, "LSP Ping reply return code: ", info.retCode,
            " (subcode: ", U32(info.retSubcode), ")");
  return sendReply(request, info);
}

bool LspPingReqHandler::passesDropChecks(const Request &request) const {
  const LspPingHdr &hdr = request.hdr();
  // Requests must come to the echo port; anything else must at least come
  // from it (and is then refused as not a request).
  if (hdr.messageType == U8(LspPingMsgType::MplsEchoRequest)) {
    if (request.eth.dstPort() != echoPort) {
      ORV_TRACE(trace, 9, "Wrong UDP dport");
      return false;
    }
  } else if (request.eth.srcPort() != echoPort) {
    ORV_TRACE(trace, 9, "Wrong UDP sport");
    return false;
  }
  if (hdr.messageType != U8(LspPingMsgType::MplsEchoRequest)) {
    ORV_TRACE(trace, 9, "wrong message type");
    return false;
  }
  if (hdr.replyMode != U8(LspPingReplyMode::ReplyIpUdp)) {
    ORV_TRACE(trace, 9, "unsupported reply mode");
    return false;
  }
  return true;
}

// A labelled request answered without a verdict is only answered when its
// top label is programmed in hardware: otherwise the packet could not have
// been switched here, and a reply would tell of a path that does not exist.
bool LspPingReqHandler::labelProgrammed(const Request &request,
                                        const LspPingRequestInfo &info) const {
  const Wirx::MplsLabelStack &labels = request.eth.labelStack();
  if (labels.empty() || info.retCode != LspPingReturnCode::noRetCode) {
    return true;
  }
  const U32 top = labels[0].label().value();
  const U32 explicitNull =
      request.eth.isIpv4() ? ipv4ExplicitNullLabel : ipv6ExplicitNullLabel;
  if (top == explicitNull) {
    return true;
  }
  const Mpls::Hardware::RouteStatus *route = mplsHwStatus_->routeTable().find(
      Mpls::RouteKey::fromLabel(labels[0].label()));
  if (!route || !route->isProgrammed()) {
    ORV_TRACE(trace, 9, "unprogrammed label: ", top);
    return false;
  }
  return true;
}

LspPingRequestInfo
LspPingReqHandler::validateRequestPkt(const Orv::Ptr<Wirx::Pkt> &pkt,
                                      const MplsUtils::EthPktParser &eth,
                                      const LspPingPduParser &pdu) const {
  ORV_TRACE(trace, 8,
            "LspPing::LspPingRequestInfo "
            "LspPing::LspPingReqHandler::validateRequestPkt(const Ptr&, const "
            "MplsUtils::EthPktParser&, const LspPing::LspPingPduParser&)");
  if (!pdu.tlvSupported()) {
    ORV_TRACE(trace, 9, "unsupported or unrecognized TLVs");
    return LspPingRequestInfo(LspPingReturnCode::tlvNotUnderstood, 0);
  }
  const TlvTypeOffsetColl *fecTlvs =
      pdu.tlvGroupParser()->tlvTypeOffset(U16(LspPingTlvType::TargetFecStack));
  if (!fecTlvs) {
    ORV_TRACE(trace, 9, "Expected Target Fec TLV not found.");
    return LspPingRequestInfo(LspPingReturnCode::malFormEchoRequest, 0);
  }
  auto fec = lspPingTargetFecTlvParserFactory(
      pkt, fecTlvs->offset(0) + U32(sizeof(LspPingTlvHdr)));
  fec->initializedIs(true);
  auto present = [](const auto *subTlv) { return subTlv && subTlv->valid(); };
  if (!present(fec->ldpIpv4SubTlv()) && !present(fec->srIpv4SubTlv()) &&
      !present(fec->srIpv6SubTlv()) && !present(fec->rsvpIpv4SubTlv())) {
    return LspPingRequestInfo(LspPingReturnCode::noRetCode, 0);
  }

  LspPingRequestInfo info(LspPingReturnCode::noRetCode, 0);
  U32 workingLabel = implicitNullLabel;
  const Wirx::MplsLabelStack &labels = eth.labelStack();
  if (labels.empty()) {
    // Arrived after penultimate-hop popping: this router is asked as egress.
    info.retSubcode = 1;
  } else {
    info.retSubcode = static_cast<U8>(labels.size());
    workingLabel = labels[0].label().value();
    info.route = transitLfib_->routeTable().get(
        Mpls::RouteKey::fromLabel(labels[0].label()));
    info.viaSet = transitLfib_->viaSetTable().get(info.route.viaSetKey);
    const LspPingReturnCode viaCode = viaCheck(info.viaSet);
    if (viaCode != LspPingReturnCode::noRetCode) {
      info.retCode = viaCode;
      return info;
    }
  }

  const Wirx::IpGenPrefix &prefix = fec->targetFec();
  if (present(fec->ldpIpv4SubTlv())) {
    info.retCode = validateFec(Mpls::FwdEqvClass{prefix}, workingLabel,
                               Mpls::CommonLib::ldpTableName);
  } else if (present(fec->srIpv4SubTlv())) {
    info.retCode = validateFec(Mpls::FwdEqvClass{prefix}, workingLabel,
                               Mpls::CommonLib::isisV4TableName);
  } else if (present(fec->srIpv6SubTlv())) {
    info.retCode = validateFec(Mpls::FwdEqvClass{prefix}, workingLabel,
                               Mpls::CommonLib::isisV6TableName);
  } else if (present(fec->rsvpIpv4SubTlv())) {
    info.retCode = validateFecRsvp(fec->rsvpSpId(), workingLabel);
  } else if (present(fec->fec128Ipv4SubTlv())) {
    info.retCode = validateFec128Pseudowire(fec->pwInfo(), workingLabel);
  } else {
    info.retCode = LspPingReturnCode::tlvNotUnderstood;
  }
  return info;
}

// noRetCode when the via set lets the request be validated further.
LspPingReturnCode
LspPingReqHandler::viaCheck(const Mpls::LfibViaSet &viaSet) const {
  if (viaSet.via.empty() ||
      (viaSet.viaType != Mpls::LfibViaType::viaTypeMpls &&
       viaSet.viaType != Mpls::LfibViaType::viaTypeExtFec)) {
    ORV_TRACE(trace, 9,
              "no via entry in lfib for label entry or not a valid via type");
    return LspPingReturnCode::labelSwitchedNoMplsFwd;
  }
  if (viaSet.viaType == Mpls::LfibViaType::viaTypeExtFec) {
    for (const auto &[index, key] : viaSet.via) {
      checkViaIndex(index);
      const Mpls::LfibExtFecVia &via = transitLfib_->extFecViaTable().get(key);
      // Pop (1) and pop-and-forward (3) are the actions answered here.
      if ((via.labelAction & ~2u) != Mpls::LfibLabelAction::pop) {
        ORV_TRACE(trace, 9, "unsupported labelAction for via ", via);
      }
    }
  }
  return LspPingReturnCode::noRetCode;
}

LspPingReturnCode
LspPingReqHandler::validateFec(const Mpls::FwdEqvClass &fec, U32 label,
                               const Orv::Name &commonLibTableName) const {
  ORV_TRACE(trace, 8,
            "LspPing::LspPingReturnCode "
            "LspPing::LspPingReqHandler::validateFec(const "
            "Mpls::FwdEqvClass&, U32, Orv::Name)");
  const Mpls::CommonLib::BindingTable *table =
      commonLibTableName == Orv::Name(Mpls::CommonLib::ldpTableName)
          ? &ldpCommonLib_->ldpTable()
          : ldpCommonLib_->table(commonLibTableName);
  if (!table) {
    ORV_TRACE(trace, 9, "no ", commonLibTableName, " CommonLib entry");
    return LspPingReturnCode::protocolIntfMismatch;
  }
  const Mpls::CommonLibEntry *entry = table->find(fec);
  if (!entry) {
    ORV_TRACE(trace, 9, "no mapping for target Fec");
    return LspPingReturnCode::noMappingForFec;
  }
  const Wirx::MplsLabel workingLabel(label);
  if (!entry->hasLabel(workingLabel) || !entry->labelInUse(workingLabel)) {
    ORV_TRACE(trace, 9, "label mapping for target Fec does not match");
    return LspPingReturnCode::labelMappingMismatch;
  }
  return label == implicitNullLabel
             ? LspPingReturnCode::repRouterEgress
             : LspPingReturnCode::labelSwitchedAtStackDep;
}

// Unlike the binding check above, the egress case is decided before the
// label is compared: an unlabelled request reached the tunnel's tail.
LspPingReturnCode LspPingReqHandler::validateFecRsvp(const Rsvp::RsvpSpId &spId,
                                                     U32 label) const {
  ORV_TRACE(trace, 8,
            "LspPing::LspPingReturnCode "
            "LspPing::LspPingReqHandler::validateFecRsvp(const "
            "Rsvp::RsvpSpId&, U32)");
  const Rsvp::RsvpStatus::SpStateTable *states =
      rsvpStatus_ ? rsvpStatus_->spState() : nullptr;
  if (!states || states->empty()) {
    ORV_TRACE(trace, 9,
              "no RSVP tunnel found, RsvpStatus does not exist or is empty");
    return LspPingReturnCode::protocolIntfMismatch;
  }
  const Rsvp::RsvpSpState *state = states->find(spId);
  if (!state) {
    ORV_TRACE(trace, 9, "no spState entry for the session path ID ", spId);
    return LspPingReturnCode::noMappingForFec;
  }
  if (label == implicitNullLabel) {
    return LspPingReturnCode::repRouterEgress;
  }
  if (state->label.value() != label) {
    ORV_TRACE(trace, 9, "label mapping for target FEC does not match label");
    return LspPingReturnCode::labelMappingMismatch;
  }
  return LspPingReturnCode::labelSwitchedAtStackDep;
}

// Pseudowires are answered without a verdict.
LspPingReturnCode
LspPingReqHandler::validateFec128Pseudowire(const LspPingPwInfo &, U32) const {
  ORV_TRACE(trace, 8,
            "LspPing::LspPingReturnCode "
            "LspPing::LspPingReqHandler::validateFec128Pseudowire(const "
            "LspPing::LspPingPwInfo&, U32)");
  return LspPingReturnCode::noRetCode;
}

bool LspPingReqHandler::sendReply(const Request &request,
                                  const LspPingRequestInfo &info) {
  Orv::Ptr<Wirx::Pkt> reply = Wirx::PktManager::instance().pktNew(0);
  if (!reply) {
    ORV_TRACE(trace, 1, "Packet allocation failed for return pkt");
    return false;
  }
  auto gen = lspPingPktGenFactory(reply);
  gen->initializedIs(true);
  const NtpTimeU64 now = NtpTime::ntpTime();
  const LspPingHdr &hdr = request.hdr();
  gen->addLspPingHdr(
      LspPingPktConstants::version, LspPingPktConstants::globalFlags,
      U8(LspPingMsgType::MplsEchoReply), hdr.replyMode, U8(info.retCode),
      info.retSubcode, hdr.senderHandle(), hdr.sequenceNumber(),
      hdr.tsSentSeconds(), hdr.tsSentmSeconds(), now.seconds, now.microSeconds);
  addReplyTlvs(*gen, request, info);
  gen->computeHdrLenChecksum();

  const MplsUtils::EthPktParser &eth = request.eth;
  Wirx::UdpPam &pam = eth.isIpv4() ? *udpPam4_ : *udpPam6_;
  pam.txSrcAddrIs(eth.isIpv4() ? Wirx::IpGenAddr(rxIntfIpAddr_)
                               : Wirx::IpGenAddr(rxIntfIp6Addr_));
  pam.txDstAddrIs(eth.srcIp());
  pam.txDstPortIs(eth.srcPort());
  pam.txPktIs(reply);
  ORV_TRACE(trace, 1,
            eth.isIpv4() ? "LSP ping V4 reply sent to: "
                         : "LSP ping V6 reply sent to: ",
            eth.srcIp());
  ORV_TRACE(trace, 9, "Ping reply senderHandle:", hdr.senderHandle());
  ORV_TRACE(trace, 9, "Ping reply sequenceNumber::", hdr.sequenceNumber());
  return true;
}

void LspPingReqHandler::addReplyTlvs(LspPingPktGen &gen, const Request &request,
                                     const LspPingRequestInfo &info) const {
  const Wirx::MplsLabelStack &labels = request.eth.labelStack();
  if (labels.empty()) {
    return;
  }
  if (info.retCode == LspPingReturnCode::noRetCode) {
    gen.addLspPingIntfAndLabelStackTlv(LspPingAddrType::ipv4Unnumbered,
                                       Wirx::IpAddr(), Wirx::IntfId(""),
                                       labels);
    return;
  }
  if (info.retCode != LspPingReturnCode::labelSwitchedAtStackDep) {
    return;
  }
  const TlvTypeOffsetColl *dsTlvs =
      request.pdu->tlvGroupParser()->tlvTypeOffset(
          U16(LspPingTlvType::DownstreamMapping));
  if (!dsTlvs) {
    return;
  }
  auto dsParser =
      lspPingDownstreamMappingTlvParserFactory(request.pkt, dsTlvs->offset(0));
  dsParser->initializedIs(true);
  const LspPingDownstreamMappingInfo &asked = dsParser->downstreamMappingInfo();
  const LspPingDownstreamMappingInfoSet mappings = getDownstreamMappingInfo(
      labels, info.route, info.viaSet, asked.multipathType,
      asked.dsMultipathBaseAddr, asked.dsMultipathBitset);
  for (const auto &[index, ds] : mappings.lspPingDownstreamMappingInfo) {
    gen.addLspPingDownstreamMappingTlv(
        ds.mtu, LspPingAddrType(ds.addrType), ds.dsFlags, ds.dsIpAddr,
        ds.dsIntfAddr, LspPingMultipathType(ds.multipathType), ds.depthLimit,
        ds.dsMultipathBaseAddr, ds.dsMultipathBitset, ds.labelStack);
  }
}

LspPingDownstreamMappingInfoSet LspPingReqHandler::getDownstreamMappingInfo(
    const Wirx::MplsLabelStack &labelStack, const Mpls::LfibRoute &route,
    const Mpls::LfibViaSet &viaSet, U8 multipathType,
    const Wirx::IpGenAddr &dsMultipathBaseAddr,
    const LspPingMultipathBitset &dsMultipathBitset) const {
  ORV_TRACE(trace, 8,
            "LspPing::LspPingDownstreamMappingInfoSet "
            "LspPing::LspPingReqHandler::getDownstreamMappingInfo(const "
            "Wirx::MplsLabelStack&, const Mpls::LfibRoute&, const "
            "Mpls::LfibViaSet&, U8, const Wirx::IpGenAddr&, const "
            "LspPing::LspPingMultipathBitset&)");
  LspPingDownstreamMappingInfoSet set;
  const LspPingDownstreamSignalingProtocol protocol =
      protocolOfSource(route.source);
  if (viaSet.viaType == Mpls::LfibViaType::viaTypeExtFec) {
    extFecViaMappings(labelStack, viaSet, protocol, multipathType,
                      dsMultipathBaseAddr, dsMultipathBitset, set);
  } else {
    plainViaMappings(viaSet, protocol, multipathType, dsMultipathBaseAddr,
                     dsMultipathBitset, set);
  }
  return set;
}

void LspPingReqHandler::plainViaMappings(
    const Mpls::LfibViaSet &viaSet, LspPingDownstreamSignalingProtocol protocol,
    U8 multipathType, const Wirx::IpGenAddr &baseAddr,
    const LspPingMultipathBitset &bitset,
    LspPingDownstreamMappingInfoSet &set) const {
  for (const auto &[index, key] : viaSet.via) {
    checkViaIndex(index);
    const Mpls::LfibVia *via = transitLfib_->viaTable().find(key);
    if (!via) {
      ORV_TRACE(trace, 9, "getDownstreamMappingInfo viaKey ", key,
                " missing from transitLfib, skipping");
      continue;
    }
    if (isNexthopTiLfaTunnel(via->intfId)) {
      tunnelMapping(via->intfId, via->labelOp, protocol, multipathType,
                    baseAddr, bitset, index, set);
      continue;
    }
    const U32 label =
        via->labelAction == Mpls::LfibLabelAction::pop || via->labelOp.empty()
            ? implicitNullLabel
            : via->labelOp[0].label().value();
    set.lspPingDownstreamMappingInfoIs(
        index,
        dsMappingInfoFromVia(withLabel({}, label), via->nexthop,
                             getIntfMtu(via->intfId), via->labelOp, protocol,
                             multipathType, baseAddr, bitset, index));
  }
}

void LspPingReqHandler::extFecViaMappings(
    const Wirx::MplsLabelStack &labelStack, const Mpls::LfibViaSet &viaSet,
    LspPingDownstreamSignalingProtocol protocol, U8 multipathType,
    const Wirx::IpGenAddr &baseAddr, const LspPingMultipathBitset &bitset,
    LspPingDownstreamMappingInfoSet &set) const {
  const U32 receivedTop =
      labelStack.empty() ? implicitNullLabel : labelStack[0].label().value();
  U32 index = 0;
  for (const auto &[viaIndex, key] : viaSet.via) {
    checkViaIndex(viaIndex);
    const Mpls::LfibExtFecVia &via = transitLfib_->extFecViaTable().get(key);
    const Mesk::FibFec *fibFec =
        forwardingStatus_ ? forwardingStatus_->fecTable().find(via.fec)
                          : nullptr;
    if (!fibFec && forwarding6Status_) {
      fibFec = forwarding6Status_->fecTable().find(via.fec);
    }
    if (fibFec) {
      for (const auto &[fibIndex, fibVia] : fibFec->via) {
        // Raises the platform's range error past the last FIB via index.
        static_cast<void>(Mesk::ViaIndex(fibIndex));
        const U32 label = fibVia.labelAction == Mpls::LfibLabelAction::pop
                              ? implicitNullLabel
                              : receivedTop;
        set.lspPingDownstreamMappingInfoIs(
            U8(index), dsMappingInfoFromVia(
                           withLabel({}, label), fibVia.nexthop,
                           getIntfMtu(fibVia.intfId), fibVia.labelStack,
                           protocol, multipathType, baseAddr, bitset, index));
        ++index;
      }
    } else if (isNexthopTiLfaTunnel(via.hierIntf)) {
      if (tunnelMapping(via.hierIntf, Wirx::MplsLabelStack(), protocol,
                        multipathType, baseAddr, bitset, index, set)) {
        ++index;
      }
    } else {
      // The FEC is not forwarded here at all: say so with the loopback
      // address rather than leave the via out.
      set.lspPingDownstreamMappingInfoIs(
          U8(index), dsMappingInfoFromVia(
                         withLabel({}, receivedTop), Wirx::IpAddr(0x7f000001),
                         defaultMtu, Wirx::MplsLabelStack(), protocol,
                         multipathType, baseAddr, bitset, index));
      ++index;
    }
  }
}

bool LspPingReqHandler::tunnelMapping(
    const Wirx::IntfId &tunnelIntf, const Wirx::MplsLabelStack &outLabelStack,
    LspPingDownstreamSignalingProtocol protocol, U8 multipathType,
    const Wirx::IpGenAddr &baseAddr, const LspPingMultipathBitset &bitset,
    U32 index, LspPingDownstreamMappingInfoSet &set) const {
  const Tunnel::TunnelId tunnelId =
      Tunnel::TunnelTable::TiLfaTunnelTable::tunnelId(tunnelIntf);
  const Tunnel::TunnelTable::TiLfaTunnelTableEntry *tunnel =
      tiLfaTunnelTable_ ? tiLfaTunnelTable_->tunnelTable().find(tunnelId)
                        : nullptr;
  if (!tunnel) {
    ORV_TRACE(trace, 9, "getDownstreamMappingInfo TI-LFA tunnel ", tunnelId,
              " missing from tunnel table, skipping");
    return false;
  }
  Wirx::IpGenAddr dsIpAddr;
  Wirx::MplsLabel label;
  Wirx::IntfId intf;
  getDownstreamIpLabelAndIntfFromTunnel(*tunnel, dsIpAddr, label, intf);
  set.lspPingDownstreamMappingInfoIs(
      U8(index), dsMappingInfoFromVia(
                     withLabel({}, label.value()), dsIpAddr, getIntfMtu(intf),
                     outLabelStack.empty() ? tunnel->labelStack : outLabelStack,
                     protocol, multipathType, baseAddr, bitset, index));
  return true;
}

LspPingDownstreamMappingInfo LspPingReqHandler::dsMappingInfoFromVia(
    LspPingDownstreamLabelEntry labelEntry, const Wirx::IpGenAddr &dsIpAddr,
    U32 mtu, const Wirx::MplsLabelStack &outLabelStack,
    LspPingDownstreamSignalingProtocol protocol, U8 multipathType,
    const Wirx::IpGenAddr &dsMultipathBaseAddr,
    const LspPingMultipathBitset &dsMultipathBitset, U32 index) const {
  LspPingDownstreamMappingInfo info;
  // A via that pops sends no label on; the mapping still names the label
  // it was reached with, as the bottom of an otherwise empty stack.
  const std::size_t count = outLabelStack.empty() ? 1 : outLabelStack.size();
  for (std::size_t i = 0; i < count; ++i) {
    const U32 label =
        i == 0 ? labelEntry.label().value() : outLabelStack[i].label().value();
    LspPingDownstreamLabelEntry entry = withLabel(labelEntry, label);
    entry.bosIs(i + 1 == count);
    entry.protocolIs(protocol);
    info.labelStack.labelEntryIs(U8(i), entry);
  }
  info.labelStack.size = U8(count);
  if (dsIpAddr.isIpv4()) {
    info.addrType = U8(LspPingAddrType::ipv4Numbered);
  } else if (dsIpAddr.isIpv6()) {
    info.addrType = U8(LspPingAddrType::ipv6Numbered);
  } else {
    ORV_ASSERT(false && "Unknown address family.");
  }
  // Only the first mapping echoes the multipath the request asked about,
  // and only when its base address fits the mapping's family.
  if (index == 0 && multipathType != 0 && dsMultipathBitset.size != 0 &&
      dsMultipathBaseAddr.af() == dsIpAddr.af()) {
    info.dsMultipathBitset = dsMultipathBitset;
    info.dsMultipathBaseAddr = dsMultipathBaseAddr;
    info.multipathType = multipathType;
  }
  info.mtu = static_cast<U16>(mtu);
  info.dsIpAddr = dsIpAddr;
  info.dsIntfAddr = unspecifiedOfFamily(dsIpAddr);
  return info;
}

void LspPingReqHandler::getDownstreamIpLabelAndIntfFromTunnel(
    const Tunnel::TunnelTable::TiLfaTunnelTableEntry &tunnel,
    Wirx::IpGenAddr &dsIpAddr, Wirx::MplsLabel &label,
    Wirx::IntfId &intf) const {
  dsIpAddr = tunnel.nexthop;
  label = tunnel.topLabel();
  intf = tunnel.intfId;
}

bool LspPingReqHandler::isNexthopTiLfaTunnel(const Wirx::IntfId &intf) const {
  return Tunnel::TunnelTable::TiLfaTunnelTable::isTiLfaTunnelIntf(intf);
}

U32 LspPingReqHandler::getIntfMtu(const Wirx::IntfId &intf) const {
  if (!deviceIntfStatusDir_) {
    return defaultMtu;
  }
  const Interface::DeviceIntfStatusEntry &entry =
      deviceIntfStatusDir_->entry(intf);
  if (!entry.intfStatus || entry.intfStatus->mtu() == 0) {
    return defaultMtu;
  }
  return entry.intfStatus->mtu();
}

Orv::Ptr<LspPingReqHandler> lspPingReqHandlerFactory(
    Orv::Ptr<const Mpls::Hardware::Status> mplsHwStatus,
    Orv::Ptr<const Mpls::Api::Status> mplsStatus,
    Orv::Ptr<const Mpls::CommonLib> ldpCommonLib,
    Orv::Ptr<const Mpls::LfibStatus> transitLfib,
    Orv::Ptr<const Mesk::Fib::ForwardingStatus> forwardingStatus,
    Orv::Ptr<const Mesk::Fib6::ForwardingStatus> forwarding6Status,
    Orv::Ptr<const Tunnel::TunnelTable::TiLfaTunnelTable> tiLfaTunnelTable,
    Orv::Ptr<Wirx::UdpPam> udpPam4, Orv::Ptr<Wirx::UdpPam> udpPam6,
    Wirx::IpAddr rxIntfIpAddr, Wirx::Ip6Addr rxIntfIp6Addr,
    Orv::Ptr<const Rsvp::RsvpStatus> rsvpStatus,
    Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir) {
  return Orv::make<LspPingReqHandler>(
      std::move(mplsHwStatus), std::move(mplsStatus), std::move(ldpCommonLib),
      std::move(transitLfib), std::move(forwardingStatus),
      std::move(forwarding6Status), std::move(tiLfaTunnelTable),
      std::move(udpPam4), std::move(udpPam6), rxIntfIpAddr, rxIntfIp6Addr,
      std::move(rsvpStatus), std::move(deviceIntfStatusDir));
}

} // namespace LspPing
