#include "LspPing/LspPingClientTxSm.h"

#include "LspPing/LspPingMsgType.h"
#include "LspPing/LspPingPktConstants.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingReplyMode.h"
#include "LspPing/LspPingSrIgpProtocol.h"
#include "LspPing/LspPingTlvType.h"
#include "LspPing/NtpTime.h"
#include "Orv/Assert.h"
#include "Orv/Clock.h"
#include "Orv/Trace.h"
#include "Wirx/EthHdr.h"
#include "Wirx/PktManager.h"

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingClientTxSm");

// One past the largest 20-bit label: what "no label configured" reads as.
constexpr U32 noLabel = 1u << 20;
constexpr U32 implicitNullLabel = 3;
constexpr U8 udpProtocol = 17;
// Requests must not leave the first hop's IP layer: the label stack decides
// where they go.
constexpr U8 requestIpTtl = 1;

// The configuration checks keep families consistent; these only make sure a
// mismatch can never reach the platform's family assertions.
Wirx::IpAddr ipv4Of(const Wirx::IpGenAddr &addr) {
  return addr.isIpv4() ? addr.v4() : Wirx::IpAddr();
}

Wirx::Ip6Addr ipv6Of(const Wirx::IpGenAddr &addr) {
  return addr.isIpv6() ? addr.v6() : Wirx::Ip6Addr();
}

U32 labelAt(const LspPingClientConfig &config, U8 index) {
  const Wirx::MplsLabel *label = config.mplsLabel().find(index);
  return label ? label->value() : noLabel;
}

} // namespace

LspPingClientTxSm::LspPingClientTxSm(
    U32 clientId, Orv::Ptr<const LspPingClientConfig> lspPingClientConfig,
    Orv::Ptr<LspPingClientStatus> lspPingClientStatus,
    Orv::Ptr<Kiv::TimerWheel> timerWheel)
    : clientId_(clientId), lspPingClientConfig_(std::move(lspPingClientConfig)),
      lspPingClientStatus_(std::move(lspPingClientStatus)),
      timerWheel_(std::move(timerWheel)),
      lspPingTxTimer_(*timerWheel_, [this] { handleTimerExpired(); }) {
  watch(*lspPingClientConfig_, LspPingClientConfig::enabledAttr,
        [this] { handleConfig(); });
  handleInitialized();
}

void LspPingClientTxSm::handleInitialized() {
  ORV_TRACE(trace, 8, "void LspPing::LspPingClientTxSm::handleInitialized()");
  initialized_ = true;
  handleConfig();
}

void LspPingClientTxSm::handleConfig() {
  if (!initialized_) {
    return;
  }
  ORV_TRACE(trace, 8, "void LspPing::LspPingClientTxSm::handleConfig()");
  // Disabling only stops the timer; re-enabling starts a new run after a
  // fresh delay and keeps the sequence number going.
  lspPingTxTimerTimeMinIs(lspPingClientConfig_->enabled()
                              ? Orv::now() + lspPingClientConfig_->pktDelay()
                              : Kiv::Timer::never);
}

void LspPingClientTxSm::handleDelete() {
  ORV_TRACE(trace, 8, "void LspPing::LspPingClientTxSm::handleDelete()");
  initialized_ = false;
  lspPingTxTimerTimeMinIs(Kiv::Timer::never);
}

void LspPingClientTxSm::handleTimerExpired() {
  if (!initialized_) {
    return;
  }
  ORV_TRACE(trace, 8, "void LspPing::LspPingClientTxSm::handleTimerExpired()");
  const LspPingClientConfig &config = *lspPingClientConfig_;
  const U32 seq = lspPingClientStatus_->sequenceNum() + 1;
  Orv::Ptr<Wirx::Pkt> pkt = echoRequest(seq);
  if (!pkt) {
    // Out of packet memory: this request is skipped, the next one tried.
    ORV_TRACE(trace, 1, "Packet allocation failed for client ", clientId_);
    lspPingTxTimerTimeMinIs(Orv::now() + config.txRate());
    return;
  }
  ORV_ASSERT(lspPingClientTxPam_);
  ORV_TRACE(trace, 9, "client ", clientId_, " sends seq ", seq, " (",
            pkt->frontBytes(), " bytes)");
  lspPingClientTxPam_->txPktIs(pkt);
  // The count is compared unsigned, as the number of requests sent.
  if (config.txCount() == LspPingTxCountConstants::infinite ||
      static_cast<U32>(config.txCount()) > seq) {
    lspPingTxTimerTimeMinIs(Orv::now() + config.txRate());
  }
  lspPingClientStatus_->sequenceNumInc(1);
}

Orv::Ptr<Wirx::Pkt> LspPingClientTxSm::echoRequest(U32 seq) const {
  Orv::Ptr<Wirx::Pkt> pkt = Wirx::PktManager::instance().pktNew(0);
  if (!pkt) {
    return nullptr;
  }
  const LspPingClientConfig &config = *lspPingClientConfig_;
  auto gen = lspPingPktGenFactory(pkt);
  gen->initializedIs(true);
  addLabelStack(*gen);
  addIpAndUdpHdrs(*gen);
  const NtpTimeU64 sent = NtpTime::ntpTime();
  gen->addLspPingHdr(
      LspPingPktConstants::version, LspPingPktConstants::globalFlags,
      U8(LspPingMsgType::MplsEchoRequest), U8(LspPingReplyMode::ReplyIpUdp), 0,
      0, clientId_, seq, sent.seconds, sent.microSeconds, 0, 0);
  addTargetFecStack(*gen);
  gen->computeHdrLenChecksum();
  if (config.dsMappingInfo().valid) {
    addDownstreamMapping(*gen);
    gen->computeHdrLenChecksum();
  }
  return pkt;
}

// A client whose top label is implicit null pings over plain IP: no label
// stack at all, the EtherType of the IP family instead.
void LspPingClientTxSm::addLabelStack(LspPingPktGen &gen) const {
  const LspPingClientConfig &config = *lspPingClientConfig_;
  if (labelAt(config, 0) == implicitNullLabel) {
    gen.addEtherHdr(config.tunnelNexthopEthAddr(), config.srcEthAddr(),
                    config.srcIpAddr().isIpv6() ? Wirx::EthHdr::etherTypeIpv6
                                                : Wirx::EthHdr::etherTypeIpv4);
    return;
  }
  gen.addEtherHdr(config.tunnelNexthopEthAddr(), config.srcEthAddr(),
                  LspPingPktConstants::mplsUnicast);
  const U8 count = static_cast<U8>(config.mplsLabel().size());
  for (U8 i = 0; i < count; ++i) {
    gen.addMplsHdr(labelAt(config, i), config.mplsTc(), i + 1 == count,
                   config.mplsTtl(i));
  }
}

void LspPingClientTxSm::addIpAndUdpHdrs(LspPingPktGen &gen) const {
  const LspPingClientConfig &config = *lspPingClientConfig_;
  if (config.srcIpAddr().isIpv6()) {
    gen.addIp6Hdr(ipv6Of(config.srcIpAddr()), ipv6Of(config.dstIpAddr()),
                  requestIpTtl, udpProtocol);
  } else {
    gen.addIpHdr(ipv4Of(config.srcIpAddr()), ipv4Of(config.dstIpAddr()),
                 requestIpTtl, udpProtocol);
  }
  gen.addUdpHdr(config.srcUdpPort(), config.dstUdpPort());
}

// One FEC sub-TLV per tunnel type. Segment-routing FECs always name IS-IS,
// and pseudowires go with an empty stack: receivers of ours expect both.
void LspPingClientTxSm::addTargetFecStack(LspPingPktGen &gen) const {
  const LspPingClientConfig &config = *lspPingClientConfig_;
  gen.addLspPingTlvHdr(U16(LspPingTlvType::TargetFecStack), 0);
  const Wirx::IpGenPrefix &prefix = config.dstPrefix();
  switch (config.tunnelType()) {
  case LspPingTunnelType::tunnelUnknown:
    gen.addLspPingLdpIpv4SubTlv(ipv4Of(config.dstIpAddr()),
                                LspPingPktConstants::prefixLength);
    break;
  case LspPingTunnelType::tunnelModeRaw:
  case LspPingTunnelType::tunnelStaticConfig:
    gen.addLspPingNilFecSubTlv(labelAt(config, 0));
    break;
  case LspPingTunnelType::tunnelLdpIpv4:
    gen.addLspPingLdpIpv4SubTlv(ipv4Of(prefix.addr()), prefix.length());
    break;
  case LspPingTunnelType::tunnelRsvpIpv4: {
    const Rsvp::RsvpSpId &id = config.rsvpSpId();
    gen.addLspPingRsvpIpv4SubTlv(id.tunnelDst, id.tunnelId, id.extendedTunnelId,
                                 ipv4Of(config.rsvpSenderAddr()), id.lspId);
    break;
  }
  case LspPingTunnelType::tunnelSrIpv4:
    gen.addLspPingSrIpv4SubTlv(ipv4Of(prefix.addr()), prefix.length(),
                               LspPingSrIgpProtocol::isis);
    break;
  case LspPingTunnelType::tunnelSrIpv6:
    gen.addLspPingSrIpv6SubTlv(ipv6Of(prefix.addr()), prefix.length(),
                               LspPingSrIgpProtocol::isis);
    break;
  default:
    break;
  }
}

void LspPingClientTxSm::addDownstreamMapping(LspPingPktGen &gen) const {
  const LspPingDownstreamMappingInfo &ds =
      lspPingClientConfig_->dsMappingInfo();
  gen.addLspPingDownstreamMappingTlv(
      ds.mtu, LspPingAddrType(ds.addrType), ds.dsFlags, ds.dsIpAddr,
      ds.dsIntfAddr, LspPingMultipathType(ds.multipathType), ds.depthLimit,
      ds.dsMultipathBaseAddr, ds.dsMultipathBitset, ds.labelStack);
}

Orv::Ptr<LspPingClientTxSm> lspPingClientTxSmFactory(
    U32 clientId, Orv::Ptr<const LspPingClientConfig> lspPingClientConfig,
    Orv::Ptr<LspPingClientStatus> lspPingClientStatus,
    Orv::Ptr<Kiv::TimerWheel> timerWheel) {
  return Orv::make<LspPingClientTxSm>(clientId, std::move(lspPingClientConfig),
                                      std::move(lspPingClientStatus),
                                      std::move(timerWheel));
}

} // namespace LspPing
