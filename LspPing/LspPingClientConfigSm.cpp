#include "LspPing/LspPingClientConfigSm.h"

#include <algorithm>
#include <array>
#include <vector>

#include "LspPing/LspPingTxCountConstants.h"
#include "Orv/Assert.h"
#include "Orv/Trace.h"

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingClientConfigSm");

// The attributes of a client's configuration that its check reads.
bool checked(Orv::AttrId attr) {
  constexpr std::array<Orv::AttrId, 8> attrs = {
      LspPingClientConfig::txIntfIdAttr.id,
      LspPingClientConfig::srcEthAddrAttr.id,
      LspPingClientConfig::tunnelNexthopEthAddrAttr.id,
      LspPingClientConfig::srcIpAddrAttr.id,
      LspPingClientConfig::dstIpAddrAttr.id,
      LspPingClientConfig::mplsLabelAttr.id,
      LspPingClientConfig::txCountAttr.id,
      LspPingClientConfig::tunnelTypeAttr.id};
  return std::find(attrs.begin(), attrs.end(), attr) != attrs.end();
}

// Tunnel types whose transmit module this machine chooses. A static
// configuration (and an unknown type) keeps whatever module its transmit
// state machine already has.
bool choosesTxPam(LspPingTunnelType type) {
  switch (type) {
  case LspPingTunnelType::tunnelModeRaw:
  case LspPingTunnelType::tunnelLdpIpv4:
  case LspPingTunnelType::tunnelRsvpIpv4:
  case LspPingTunnelType::tunnelSrIpv4:
  case LspPingTunnelType::tunnelSrIpv6:
  case LspPingTunnelType::tunnelPwLdp:
    return true;
  default:
    return false;
  }
}

// Why `config` cannot be enabled, the first failing check deciding; null
// when it can. The order is part of the contract: management layers show
// the one reason.
const char *disabledReason(const LspPingClientConfig &config,
                           const LspPingClientTxSm &txSm) {
  if (config.tunnelType() == LspPingTunnelType::tunnelUnknown) {
    return "Invalid Tunnel Type";
  }
  if (!config.txIntfId()) {
    return "Transmit Interface is not set";
  }
  if (!txSm.lspPingClientTxPam()) {
    return "Transmit Interface is not ready";
  }
  if (config.mplsLabel().empty()) {
    return "No MPLS label is found";
  }
  if (config.srcIpAddr() == Wirx::IpGenAddr()) {
    return "Invalid Source IP Address";
  }
  if (config.dstIpAddr() == Wirx::IpGenAddr()) {
    return "Invalid Destination IP Address";
  }
  if (!config.srcEthAddr()) {
    return "Invalid Source Ethernet Address";
  }
  if (!config.tunnelNexthopEthAddr()) {
    return "Invalid Nexthop Ethernet Address";
  }
  // Only "none" and "not set" are refused: every other negative count
  // passes, as infinite does.
  if (config.txCount() == 0 ||
      config.txCount() == LspPingTxCountConstants::invalid) {
    return "Invalid Ping count";
  }
  return nullptr;
}

} // namespace

LspPingClientConfigSm::ClientConfigReactor::ClientConfigReactor(
    LspPingClientConfigSm &owner, Orv::Ptr<LspPingClientConfig> config)
    : owner_(owner), lspPingClientConfig_(std::move(config)) {
  // One watch rather than one per attribute: a host keeps every watch of
  // every client, and of thousands of clients they add up.
  watchAll(*lspPingClientConfig_, [this](Orv::AttrId attr) {
    if (checked(attr)) {
      handleClientConfig();
    }
  });
  handleClientConfig();
}

void LspPingClientConfigSm::ClientConfigReactor::handleClientConfig() {
  if (!owner_.initialized()) {
    return;
  }
  ORV_TRACE(trace, 8, "handleClientConfig ", clientId());
  owner_.updateMapping(clientId(), prevTxIntfId_);
  // Noted before the checks: a watcher of their verdict may change the
  // configuration again, and that nested pass must start from where the
  // client now sits in the index.
  prevTxIntfId_ = lspPingClientConfig_->txIntfId();
  owner_.updateClientConfig(clientId());
}

LspPingClientConfigSm::LspPingClientConfigSm(
    Orv::Ptr<LspPingClientConfigColl> lspPingClientConfigColl,
    Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl,
    Orv::Ptr<const LspPingClientSmColl> lspPingClientSmColl,
    Orv::Ptr<const Interface::EthDevPamCollection> ethDevPamCollection,
    Orv::Ptr<Kiv::TimerWheel> timerWheel)
    : lspPingClientConfigColl_(std::move(lspPingClientConfigColl)),
      lspPingClientStatusColl_(std::move(lspPingClientStatusColl)),
      lspPingClientSmColl_(std::move(lspPingClientSmColl)),
      ethDevPamCollection_(std::move(ethDevPamCollection)),
      timerWheel_(std::move(timerWheel)) {
  watch(*lspPingClientConfigColl_,
        LspPingClientConfigColl::pingClientConfigAttr,
        [this](U32 clientId) { onPingClientConfig(clientId); });
  if (ethDevPamCollection_) {
    watch(*ethDevPamCollection_, Interface::EthDevPamCollection::intfPamAttr,
          [this](const Wirx::IntfId &intfId) { onIntfPam(intfId); });
  }
  for (const auto &[clientId, config] :
       lspPingClientConfigColl_->pingClientConfig()) {
    clientConfigIs(config);
  }
  handleInitialized();
}

LspPingClientConfigSm::~LspPingClientConfigSm() { handleDelete(); }

void LspPingClientConfigSm::handleInitialized() {
  ORV_TRACE(trace, 8, "handleInitialized");
  initialized_ = true;
  // By id: a check may lead others to delete clients under our feet.
  std::vector<U32> clientIds;
  clientIds.reserve(clientConfig_.size());
  for (const auto &entry : clientConfig_) {
    clientIds.push_back(entry.first);
  }
  for (U32 clientId : clientIds) {
    if (Orv::Ptr<ClientConfigReactor> reactor = clientConfig(clientId)) {
      reactor->handleClientConfig();
    }
  }
}

void LspPingClientConfigSm::handleDelete() {
  ORV_TRACE(trace, 8, "handleDelete");
  initialized_ = false;
}

void LspPingClientConfigSm::onPingClientConfig(U32 clientId) {
  if (!initialized_) {
    return;
  }
  ORV_TRACE(trace, 8, "onPingClientConfig ", clientId);
  if (Orv::Ptr<LspPingClientConfig> config =
          lspPingClientConfigColl_->pingClientConfig(clientId)) {
    clientConfigIs(config);
  } else {
    clientConfigDel(clientId);
  }
}

void LspPingClientConfigSm::onIntfPam(const Wirx::IntfId &intfId) {
  handleDevicePam(intfId);
}

void LspPingClientConfigSm::clientConfigIs(
    const Orv::Ptr<LspPingClientConfig> &config) {
  if (clientConfig_.contains(config->clientId())) {
    return;
  }
  clientConfig_.is(config->clientId(),
                   Orv::make<ClientConfigReactor>(*this, config));
}

void LspPingClientConfigSm::clientConfigDel(U32 clientId) {
  clientConfig_.del(clientId);
}

void LspPingClientConfigSm::handleDevicePam(const Wirx::IntfId &intfId) {
  if (!initialized_) {
    return;
  }
  ORV_TRACE(trace, 8, "handleDevicePam ", intfId);
  Orv::Ptr<LspPingClientIntfIdMapping> mapping =
      pingClientIntfIdMapping(intfId);
  if (!mapping) {
    return;
  }
  // A copy: a check may move clients between interfaces, and so edit or
  // drop this very set, while we walk it.
  std::vector<U32> clientIds;
  clientIds.reserve(mapping->pingClientIdCount());
  for (const auto &entry : mapping->pingClientId()) {
    clientIds.push_back(entry.first);
  }
  for (U32 clientId : clientIds) {
    updateClientConfig(clientId);
  }
}

void LspPingClientConfigSm::updateMapping(U32 clientId,
                                          const Wirx::IntfId &prevTxIntfId) {
  ORV_TRACE(trace, 8, "updateMapping ", clientId, " ", prevTxIntfId);
  Orv::Ptr<LspPingClientConfig> config =
      lspPingClientConfigColl_->pingClientConfig(clientId);
  if (config && config->txIntfId() == prevTxIntfId) {
    return;
  }
  if (config && !!config->txIntfId()) {
    Orv::Ptr<LspPingClientIntfIdMapping> mapping =
        pingClientIntfIdMapping(config->txIntfId());
    if (!mapping) {
      mapping = lspPingClientIntfIdMappingFactory(config->txIntfId());
      pingClientIntfIdMappingColl_.is(config->txIntfId(), mapping);
    }
    mapping->pingClientIdIs(clientId, true);
  }
  if (!prevTxIntfId) {
    return;
  }
  Orv::Ptr<LspPingClientIntfIdMapping> prev =
      pingClientIntfIdMapping(prevTxIntfId);
  // The client was entered under its previous interface when it moved
  // there, and only this client's own moves take it out.
  ORV_ASSERT(prev);
  prev->pingClientIdDel(clientId);
  if (prev->pingClientIdCount() == 0) {
    pingClientIntfIdMappingColl_.del(prevTxIntfId);
  }
}

void LspPingClientConfigSm::updateClientConfig(U32 clientId) {
  ORV_TRACE(trace, 8, "updateClientConfig ", clientId);
  // A client deleted since it was entered in the reverse index.
  Orv::Ptr<LspPingClientConfig> config =
      lspPingClientConfigColl_->pingClientConfig(clientId);
  if (!config) {
    return;
  }
  if (choosesTxPam(config->tunnelType())) {
    updateTxPam(clientId);
  }
  computeEnabled(clientId);
}

void LspPingClientConfigSm::updateTxPam(U32 clientId) {
  ORV_TRACE(trace, 8, "updateTxPam ", clientId);
  Orv::Ptr<LspPingClientConfig> config =
      lspPingClientConfigColl_->pingClientConfig(clientId);
  if (!config) {
    return;
  }
  Orv::Ptr<LspPingClientTxSm> txSm = pingClientTxSm(clientId);
  Orv::Ptr<Wirx::Pam> pam =
      ethDevPamCollection_ ? ethDevPamCollection_->intfPam(config->txIntfId())
                           : nullptr;
  txSm->lspPingClientTxPamIs(pam);
  ORV_TRACE(trace, 9, pam ? "Setting" : "Clearing", " pingClientTxSm clientId ",
            clientId);
}

void LspPingClientConfigSm::computeEnabled(U32 clientId) {
  ORV_TRACE(trace, 8, "computeEnabled ", clientId);
  Orv::Ptr<LspPingClientConfig> config =
      lspPingClientConfigColl_->pingClientConfig(clientId);
  if (!config) {
    return;
  }
  Orv::Ptr<LspPingClientTxSm> txSm = pingClientTxSm(clientId);
  const char *reason = disabledReason(*config, *txSm);
  // The reason first: whoever reacts to `enabled` finds it current.
  config->reasonIs(reason ? reason : "Enabled");
  config->enabledIs(reason == nullptr);
}

Orv::Ptr<LspPingClientTxSm>
LspPingClientConfigSm::pingClientTxSm(U32 clientId) const {
  Orv::Ptr<LspPingClientTxSm> pingClientTxSm =
      lspPingClientSmColl_->pingClientTxSm(clientId);
  ORV_ASSERT(pingClientTxSm && "Internal Error");
  return pingClientTxSm;
}

Orv::Ptr<LspPingClientConfigSm> lspPingClientConfigSmFactory(
    Orv::Ptr<LspPingClientConfigColl> lspPingClientConfigColl,
    Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl,
    Orv::Ptr<const LspPingClientSmColl> lspPingClientSmColl,
    Orv::Ptr<const Interface::EthDevPamCollection> ethDevPamCollection,
    Orv::Ptr<Kiv::TimerWheel> timerWheel) {
  return Orv::make<LspPingClientConfigSm>(
      std::move(lspPingClientConfigColl), std::move(lspPingClientStatusColl),
      std::move(lspPingClientSmColl), std::move(ethDevPamCollection),
      std::move(timerWheel));
}

} // namespace LspPing
