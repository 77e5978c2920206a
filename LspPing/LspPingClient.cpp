#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientStatusColl.h"
#include "LspPing/LspPingPktConstants.h"
#include "LspPing/LspPingTxCountConstants.h"
#include "Orv/Assert.h"

namespace LspPing {

Orv::Ptr<LspPingClientConfig> lspPingClientConfigFactory(U32 clientId) {
  return Orv::make<LspPingClientConfig>(clientId);
}

Orv::Ptr<LspPingClientConfig>
LspPingClientConfigColl::pingClientConfigIs(U32 clientId) {
  if (auto existing = pingClientConfig(clientId)) {
    return existing;
  }
  auto config = lspPingClientConfigFactory(clientId);
  config->parentIs(this);
  pingClientConfig_.is(clientId, config);
  return config;
}

Orv::Ptr<LspPingClientConfigColl>
lspPingClientConfigCollFactory(const Orv::Name &name) {
  return Orv::make<LspPingClientConfigColl>(name);
}

Orv::Ptr<LspPingClientStatus> lspPingClientStatusFactory(U32 clientId) {
  return Orv::make<LspPingClientStatus>(clientId);
}

Orv::Ptr<LspPingClientStatus>
LspPingClientStatusColl::pingClientStatusIs(U32 clientId) {
  if (auto existing = pingClientStatus(clientId)) {
    return existing;
  }
  auto status = lspPingClientStatusFactory(clientId);
  status->parentIs(this);
  pingClientStatus_.is(clientId, status);
  return status;
}

Orv::Ptr<LspPingClientStatusColl>
lspPingClientStatusCollFactory(const Orv::Name &name) {
  return Orv::make<LspPingClientStatusColl>(name);
}

void LspPingReplyPktInfo::valueTextReadRefused() {
  ORV_ASSERT(!"No String constructor for LspPingReplyPktInfo - has collection");
}

std::ostream &operator<<(std::ostream &os, const LspPingReplyPktInfo &info) {
  return os << Orv::valueText(info);
}

LspPingReplyPktInfo lspPingReplyPktInfoFactory(U32 seqNum,
                                               LspPingReturnCode retCode,
                                               const Wirx::IpGenAddr &replyHost,
                                               U32 roundTrip) {
  return LspPingReplyPktInfo(seqNum, retCode, replyHost, roundTrip);
}

LspPingPktConstants lspPingPktConstantsFactory() {
  return LspPingPktConstants{};
}

LspPingTxCountConstants lspPingTxCountConstantsFactory() {
  return LspPingTxCountConstants{};
}

} // namespace LspPing
