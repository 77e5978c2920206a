#include "Session/Client.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientStatusColl.h"
#include "LspPing/LspPingTxCountConstants.h"
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
  config.mplsTcIs(target.tc);
  config.rsvpSpIdIs(target.rsvp);
  config.rsvpSenderAddrIs(target.rsvpSender);
  config.pwInfoIs(target.pw);
  config.pktDelayIs(0);
  // The library leaves a static configuration's module to its host: the
  // transmit state machine keeps the one it is given.
  if (target.tunnelType == LspPing::LspPingTunnelType::tunnelStaticConfig) {
    host.clientRoot()
        .lspPingClientSmColl()
        ->pingClientTxSm(id)
        ->lspPingClientTxPamIs(
            host.clientRoot().ethDevPamCollection()->intfPam(path.intf));
  }
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
  ttlsIs(ttl, {});
  config.dsMappingInfoIs(dsMapping);
  config.dstIpAddrIs(dst);
  const Orv::U32 seq = status_->sequenceNum() + 1;
  config.txCountIs(static_cast<Orv::S32>(seq));
  return config.enabled() ? seq : 0;
}

// The transmit state machine counts each request it sends in the status.
bool Client::requestsIs(Orv::U32 count, double interval, Orv::U8 ttl,
                        const std::vector<Orv::U8> &labelTtls,
                        const Wirx::IpGenAddr &dst, SentHandler onSent) {
  LspPing::LspPingClientConfig &config = *config_;
  onSent_ = std::move(onSent);
  watch(*status_, LspPing::LspPingClientStatus::sequenceNumAttr,
        [this] { onSent_(status_->sequenceNum()); });
  ttlsIs(ttl, labelTtls);
  config.dstIpAddrIs(dst);
  config.txRateIs(interval);
  config.txCountIs(count == 0
                       ? LspPing::LspPingTxCountConstants::infinite
                       : Orv::S32(std::min<Orv::U32>(
                             count, std::numeric_limits<Orv::S32>::max())));
  return config.enabled();
}

void Client::ttlsIs(Orv::U8 ttl, const std::vector<Orv::U8> &labelTtls) {
  LspPing::LspPingClientConfig &config = *config_;
  for (Orv::U8 i = 0; i < config.mplsLabel().size(); ++i) {
    config.mplsTtlIs(i, i < labelTtls.size() ? labelTtls[i] : ttl);
  }
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
  // The record is the session's once handed on: it goes from the status,
  // which would otherwise keep 256 per client, however long a ping runs.
  status_->replyPktInfoDel(slot);
  onReply_(reply);
}

} // namespace Session
