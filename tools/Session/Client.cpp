#include "Session/Client.h"

#include <utility>

#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientStatusColl.h"
#include "Orv/Assert.h"

namespace Session {

namespace {

// A next hop that is the egress gets no label: the library then sends
// plain IP.
constexpr Orv::U32 implicitNull = 3;

// Two sessions on one client would take each other's replies.
Orv::Ptr<LspPing::LspPingClientConfig> newConfig(const Host &host,
                                                 Orv::U32 id) {
  LspPing::LspPingClientConfigColl &configs =
      *host.clientRoot().lspPingClientConfigColl();
  ORV_ASSERT(!configs.pingClientConfig(id));
  return configs.pingClientConfigIs(id);
}

} // namespace

Client::Client(const Host &host, Orv::U32 id, LspPing::LspPingMode mode,
               const Target &target, const IngressPath &path,
               ReplyHandler onReply)
    : host_(host), id_(id), config_(newConfig(host, id)),
      status_(
          host.clientRoot().lspPingClientStatusColl()->pingClientStatus(id)),
      onReply_(std::move(onReply)) {
  ORV_ASSERT(status_);
  LspPing::LspPingClientConfig &config = *config_;
  config.modeIs(mode);
  config.tunnelTypeIs(target.tunnelType);
  config.dstPrefixIs(target.fec);
  config.txIntfIdIs(path.intf);
  config.srcIpAddrIs(path.src);
  config.srcUdpPortIs(host.replyTap().port());
  config.srcEthAddrIs(path.srcEthAddr);
  config.tunnelNexthopEthAddrIs(path.nexthopEthAddr);
  if (path.labels.empty()) {
    config.mplsLabelIs(0, Wirx::MplsLabel(implicitNull));
  }
  for (Orv::U8 i = 0; i < path.labels.size(); ++i) {
    config.mplsLabelIs(i, path.labels[i]);
  }
  config.pktDelayIs(0);
  watch(*status_, LspPing::LspPingClientStatus::replyPktInfoAttr,
        [this](const Orv::U8 &slot) { handleReply(slot); });
}

Client::~Client() {
  host_.clientRoot().lspPingClientConfigColl()->pingClientConfigDel(id_);
}

// The transmit state machine sends once it is enabled, and stays enabled
// when its count is reached: a count of 0 disables it, and the count of one
// more request enables it again, which sends at once.
Orv::U32
Client::requestIs(Orv::U8 ttl,
                  const LspPing::LspPingDownstreamMappingInfo &dsMapping,
                  const Wirx::IpGenAddr &dst) {
  LspPing::LspPingClientConfig &config = *config_;
  config.txCountIs(0);
  for (Orv::U8 i = 0; i < config.mplsLabel().size(); ++i) {
    config.mplsTtlIs(i, ttl);
  }
  config.dsMappingInfoIs(dsMapping);
  config.dstIpAddrIs(dst);
  const Orv::U32 seq = status_->sequenceNum() + 1;
  config.txCountIs(static_cast<Orv::S32>(seq));
  return config.enabled() ? seq : 0;
}

void Client::handleReply(Orv::U8 slot) {
  const LspPing::LspPingReplyPktInfo *info = status_->replyPktInfo().find(slot);
  if (!info) {
    return;
  }
  Reply reply;
  reply.seq = info->seqNum;
  reply.code = info->retCode;
  reply.subcode = host_.replyTap().returnSubcode(id_, info->seqNum).value_or(0);
  reply.from = info->replyHost;
  reply.roundTrip = info->roundTrip;
  for (const auto &[index, mapping] : info->downstreamMappingInfo) {
    reply.mappings.push_back(mapping);
  }
  onReply_(reply);
}

} // namespace Session
