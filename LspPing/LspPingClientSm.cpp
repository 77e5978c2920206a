#include "LspPing/LspPingClientListenerSm.h"
#include "LspPing/LspPingClientSmColl.h"
#include "LspPing/LspPingClientSmManager.h"
#include "LspPing/LspPingMsgType.h"
#include "Orv/Assert.h"
#include "Orv/Clock.h"
#include "Orv/Trace.h"

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingClientSm");

} // namespace

Orv::Ptr<LspPingClientTxSm> LspPingClientSmColl::pingClientTxSmIs(
    U32 clientId, const Orv::Ptr<const LspPingClientConfig> &config,
    const Orv::Ptr<LspPingClientStatus> &status,
    const Orv::Ptr<Kiv::TimerWheel> &timerWheel) {
  if (auto existing = pingClientTxSm(clientId)) {
    return existing;
  }
  auto txSm = lspPingClientTxSmFactory(clientId, config, status, timerWheel);
  pingClientTxSm_.is(clientId, txSm);
  return txSm;
}

Orv::Ptr<LspPingClientRxSm> LspPingClientSmColl::pingClientRxSmIs(
    U32 clientId, const Orv::Ptr<const LspPingClientConfig> &config,
    const Orv::Ptr<LspPingClientStatus> &status,
    const Orv::Ptr<LspPingMsgPipe> &rxMsgPipe) {
  if (auto existing = pingClientRxSm(clientId)) {
    return existing;
  }
  auto rxSm = lspPingClientRxSmFactory(clientId, config, status, rxMsgPipe);
  pingClientRxSm_.is(clientId, rxSm);
  return rxSm;
}

void LspPingClientSmColl::pingClientTxSmDel(U32 clientId) {
  if (auto txSm = pingClientTxSm(clientId)) {
    txSm->handleDelete();
    pingClientTxSm_.del(clientId);
  }
}

void LspPingClientSmColl::pingClientRxSmDel(U32 clientId) {
  if (auto rxSm = pingClientRxSm(clientId)) {
    rxSm->handleDelete();
    pingClientRxSm_.del(clientId);
  }
}

void LspPingClientSmColl::pingClientTxSmDelAll() {
  while (!pingClientTxSm_.empty()) {
    pingClientTxSmDel(pingClientTxSm_.begin()->first);
  }
}

void LspPingClientSmColl::pingClientRxSmDelAll() {
  while (!pingClientRxSm_.empty()) {
    pingClientRxSmDel(pingClientRxSm_.begin()->first);
  }
}

Orv::Ptr<LspPingClientSmColl>
lspPingClientSmCollFactory(const Orv::Name &name) {
  return Orv::make<LspPingClientSmColl>(name);
}

LspPingClientSmManager::LspPingClientSmManager(
    Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl,
    Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl,
    Orv::Ptr<LspPingClientSmColl> lspPingClientSmColl,
    Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl,
    Orv::Ptr<Kiv::TimerWheel> timerWheel)
    : lspPingClientConfigColl_(std::move(lspPingClientConfigColl)),
      lspPingClientStatusColl_(std::move(lspPingClientStatusColl)),
      lspPingClientSmColl_(std::move(lspPingClientSmColl)),
      lspPingClientRxMsgPipeColl_(std::move(lspPingClientRxMsgPipeColl)),
      timerWheel_(std::move(timerWheel)) {
  watch(*lspPingClientConfigColl_,
        LspPingClientConfigColl::pingClientConfigAttr,
        [this](const U32 &clientId) { handleClientConfig(clientId); });
  handleInitialized();
}

void LspPingClientSmManager::handleInitialized() {
  initialized_ = true;
  std::vector<U32> present;
  for (const auto &[clientId, config] :
       lspPingClientConfigColl_->pingClientConfig()) {
    present.push_back(clientId);
  }
  for (U32 clientId : present) {
    handleClientConfig(clientId);
  }
}

void LspPingClientSmManager::handleClientConfig(U32 clientId) {
  if (!initialized_) {
    return;
  }
  if (lspPingClientConfigColl_->pingClientConfig(clientId)) {
    handleClientCreate(clientId);
  } else {
    handleClientDelete(clientId);
  }
}

// The receive side exists before the first request can leave.
void LspPingClientSmManager::handleClientCreate(U32 clientId) {
  ORV_TRACE(trace, 8,
            "void LspPing::LspPingClientSmManager::handleClientCreate(U32)");
  const Orv::Ptr<const LspPingClientConfig> config =
      lspPingClientConfigColl_->pingClientConfig(clientId);
  const Orv::Ptr<LspPingClientStatus> status =
      lspPingClientStatusColl_->pingClientStatusIs(clientId);
  const Orv::Ptr<LspPingMsgPipe> rxMsgPipe = lspPingMsgPipeFactory("pam");
  lspPingClientRxMsgPipeColl_->clientRxMsgPipeIs(clientId, rxMsgPipe);
  ORV_ASSERT(config && "config should be valid");
  ORV_ASSERT(status && "status should be valid");
  ORV_ASSERT(rxMsgPipe && "rxPam should be valid");
  lspPingClientSmColl_->pingClientRxSmIs(clientId, config, status, rxMsgPipe);
  lspPingClientSmColl_->pingClientTxSmIs(clientId, config, status, timerWheel_);
}

// The client's results go with its configuration.
void LspPingClientSmManager::handleClientDelete(U32 clientId) {
  lspPingClientSmColl_->pingClientTxSmDel(clientId);
  lspPingClientSmColl_->pingClientRxSmDel(clientId);
  lspPingClientRxMsgPipeColl_->clientRxMsgPipeDel(clientId);
  lspPingClientStatusColl_->pingClientStatusDel(clientId);
}

Orv::Ptr<LspPingClientSmManager> lspPingClientSmManagerFactory(
    Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl,
    Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl,
    Orv::Ptr<LspPingClientSmColl> lspPingClientSmColl,
    Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl,
    Orv::Ptr<Kiv::TimerWheel> timerWheel) {
  return Orv::make<LspPingClientSmManager>(
      std::move(lspPingClientConfigColl), std::move(lspPingClientStatusColl),
      std::move(lspPingClientSmColl), std::move(lspPingClientRxMsgPipeColl),
      std::move(timerWheel));
}

LspPingClientListenerSm::LspPingClientListenerSm(
    Orv::Ptr<Wirx::UdpPam> udpPam,
    Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl,
    Orv::Ptr<Kiv::TimerWheel> timerWheel,
    Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl)
    : udpPam_(std::move(udpPam)),
      lspPingClientRxMsgPipeColl_(std::move(lspPingClientRxMsgPipeColl)),
      timerWheel_(std::move(timerWheel)),
      lspPingClientConfigColl_(std::move(lspPingClientConfigColl)),
      resumeTimer_(*timerWheel_, [this] { handleUdpPamReadable(); }) {
  watch(*udpPam_, Wirx::Pam::readableCountAttr,
        [this] { handleUdpPamReadable(); });
  handleInitialized();
}

// Replies that arrived before the listener existed are read at once.
void LspPingClientListenerSm::handleInitialized() {
  initialized_ = true;
  handleUdpPamReadable();
}

void LspPingClientListenerSm::handleDelete() {
  initialized_ = false;
  resumeTimer_.timeMinIs(Kiv::Timer::never);
}

void LspPingClientListenerSm::handleUdpPamReadable() {
  if (!initialized_) {
    return;
  }
  const double deadline = Orv::now() + maxProcessTime_;
  while (Orv::Ptr<Wirx::Pkt> pkt = udpPam_->rxPkt()) {
    deliver(pkt);
    if (Orv::now() > deadline) {
      // Whatever is still queued is read on the wheel's next pass.
      resumeTimer_.timeMinIs(Orv::now());
      return;
    }
  }
}

bool LspPingClientListenerSm::deliver(const Orv::Ptr<Wirx::Pkt> &pkt) {
  const Wirx::IpGenAddr source = udpPam_->rxSrcAddr();
  auto pdu = lspPingPduParserFactory(pkt, 0);
  pdu->initializedIs(true);
  // A message without a readable header has no sender to give it to.
  const LspPingHdr *hdr = pdu->lspPingHdr();
  if (!hdr) {
    return false;
  }
  if (hdr->messageType == U8(LspPingMsgType::MplsEchoRequest)) {
    ORV_TRACE(trace, 9, "Dropping unexpected LspPing Echo Request");
    return false;
  }
  const U32 senderHandle = hdr->senderHandle();
  ORV_TRACE(trace, 9, "senderHandle:", senderHandle);
  const Orv::Ptr<LspPingClientConfig> config =
      lspPingClientConfigColl_->pingClientConfig(senderHandle);
  if (!config) {
    return false;
  }
  if (source == config->srcIpAddr()) {
    ORV_TRACE(trace, 9, "Reply from local LspPing Agent. Discard.");
    return false;
  }
  const Orv::Ptr<LspPingMsgPipe> pipe =
      lspPingClientRxMsgPipeColl_->clientRxMsgPipe(senderHandle);
  if (!pipe) {
    return false;
  }
  pipe->txMsgIs(lspPingMsgFactory(pkt, 0, source, udpPam_->port(), pdu));
  return true;
}

Orv::Ptr<LspPingClientListenerSm> lspPingClientListenerSmFactory(
    Orv::Ptr<Wirx::UdpPam> udpPam,
    Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl,
    Orv::Ptr<Kiv::TimerWheel> timerWheel,
    Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl) {
  return Orv::make<LspPingClientListenerSm>(
      std::move(udpPam), std::move(lspPingClientRxMsgPipeColl),
      std::move(timerWheel), std::move(lspPingClientConfigColl));
}

} // namespace LspPing
