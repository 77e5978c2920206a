#include "LspPing/PlatformProbeSm.h"

#include <stdexcept>

#include "MplsUtils/EthPktParser.h"
#include "Orv/Assert.h"
#include "Orv/Trace.h"
#include "PacketTracer/L2Header.h"
#include "PacketTracer/L3Header.h"
#include "PacketTracer/Request.h"
#include "Wirx/EthHdr.h"
#include "Wirx/Ipv4Hdr.h"
#include "Wirx/Ipv6Hdr.h"

namespace LspPing::PlatformProbe {

namespace {

Orv::TraceSource trace("LspPing/PlatformProbeSm");

using Layer = MplsUtils::EthPktParser::Layer;

// The request every address of a probe is filed with, but for the inner
// destination address.
PacketTracer::Request requestFor(const ClientConfig &clientConfig) {
  PacketTracer::Request request(clientConfig.ingressIntf());
  const auto &pkt = clientConfig.pkt();
  if (!pkt || pkt->parsedUpTo() < Layer::ethernet) {
    return request;
  }
  const auto *eth = reinterpret_cast<const Wirx::EthHdr *>(pkt->frame());
  PacketTracer::L2Header l2;
  l2.dstMac = pkt->ethDst();
  l2.srcMac = pkt->ethSrc();
  l2.etherType = eth->etherType();
  request.l2HeaderIs(l2);

  const Wirx::MplsLabelStack &labels = pkt->labelStack();
  const Orv::U32 count = labels.size();
  for (Orv::U32 i = 0; i < count; ++i) {
    request.mplsLabelIs(static_cast<Orv::U8>(i), labels[i]);
  }
  request.numMplsLabelsIs(static_cast<Orv::U8>(count));

  if (pkt->parsedUpTo() < Layer::ip) {
    return request;
  }
  const Orv::U8 *ip = pkt->frame() + pkt->ipHdrOffset();
  if (pkt->isIpv4()) {
    const auto *hdr = reinterpret_cast<const Wirx::Ipv4Hdr *>(ip);
    PacketTracer::L3Header l3(Wirx::AddrFamily::ipv4);
    l3.srcIpExternalIs(pkt->srcIp());
    l3.dstIpExternalIs(pkt->dstIp());
    l3.protocolExternalIs(Wirx::IpProto(hdr->protocol()));
    l3.ttlExternalIs(Wirx::IpTtl(hdr->ttl()));
    request.hasInnerL3HeaderIs(true);
    request.innerL3HeaderIs(l3);
  } else if (pkt->isIpv6()) {
    const auto *hdr = reinterpret_cast<const Wirx::Ipv6Hdr *>(ip);
    PacketTracer::L3Header l3(Wirx::AddrFamily::ipv6);
    l3.srcIpExternalIs(pkt->srcIp());
    l3.dstIpExternalIs(pkt->dstIp());
    l3.flowLabelExternalIs(Wirx::IpFlowLabel(hdr->flowLabel()));
    l3.hopLimitExternalIs(hdr->hopLimit());
    l3.nextHeaderExternalIs(hdr->nextHeader());
    request.hasInnerL3HeaderIs(true);
    request.innerL3HeaderIs(l3);
  }
  return request;
}

} // namespace

void Config::clientIs(const Orv::Ptr<ClientConfig> &clientConfig) {
  if (!clientConfig) {
    throw std::invalid_argument(
        "null _client parameter to mutator for "
        "LspPing::PlatformProbe::Config::client not allowed\"");
  }
  client_.is(clientConfig->id(), clientConfig);
}

void Status::clientIs(const Orv::Ptr<ClientStatus> &clientStatus) {
  if (!clientStatus) {
    throw std::invalid_argument(
        "null _client parameter to mutator for "
        "LspPing::PlatformProbe::Status::client not allowed\"");
  }
  client_.is(clientStatus->id(), clientStatus);
}

ProbeSm::ProbeSm(Orv::Ptr<const Config> config, Orv::Ptr<Status> status,
                 Orv::Ptr<PacketTracer::ClientConfig> packetTracerConfig,
                 Orv::Ptr<const PacketTracer::ClientStatus> packetTracerStatus,
                 std::string packetTracerClientName)
    : config_(std::move(config)), status_(std::move(status)),
      packetTracerConfig_(std::move(packetTracerConfig)),
      packetTracerStatus_(std::move(packetTracerStatus)),
      packetTracerClientName_(std::move(packetTracerClientName)) {
  watch(*config_, Config::clientAttr, [this](Orv::U32 id) { onClient(id); });
  watch(*packetTracerStatus_, PacketTracer::ClientStatus::resultAttr,
        [this](const PacketTracer::RequestId &requestId) {
          onResult(requestId);
        });
  packetTracerClientIdIs(0);
}

void ProbeSm::onClient(Orv::U32 id) { handleProbeClient(id); }

void ProbeSm::onResult(const PacketTracer::RequestId &requestId) {
  handlePacketTracerStatus(requestId);
}

void ProbeSm::handleProbeClient(Orv::U32 id) {
  if (config_->client().contains(id)) {
    createProbeClient(id);
  } else {
    destroyProbeClient(id);
  }
}

void ProbeSm::createProbeClient(Orv::U32 id) {
  ORV_TRACE(trace, 8, __PRETTY_FUNCTION__);
  const Orv::Ptr<ClientConfig> clientConfig = config_->client(id);
  ORV_ASSERT(!!clientConfig);
  const auto clientStatus = Orv::make<ClientStatus>(id);
  status_->clientIs(clientStatus);

  PacketTracer::Request request = requestFor(*clientConfig);
  for (const auto &[addr, present] : clientConfig->addr()) {
    ORV_TRACE(trace, 2, "Adding probe for ", addr);
    PacketTracer::L3Header l3 = request.innerL3Header();
    l3.dstIpExternalIs(addr);
    request.innerL3HeaderIs(l3);
    const Orv::U32 n = packetTracerClientId_;
    clientStatus->requestIs(addr, n);
    tracerClientIdToProbeIdIs(n, id);
    packetTracerClientIdInc(1);
    packetTracerConfig_->requestIs(
        PacketTracer::RequestId(packetTracerClientName_, n), request);
  }
}

void ProbeSm::destroyProbeClient(Orv::U32 id) {
  ORV_TRACE(trace, 8, __PRETTY_FUNCTION__);
  const Orv::Ptr<ClientStatus> clientStatus = status_->client(id);
  if (!clientStatus) {
    ORV_TRACE(trace, 8, __PRETTY_FUNCTION__, " Client status is already gone");
    return;
  }
  for (const auto &[addr, n] : clientStatus->request()) {
    packetTracerConfig_->requestDel(
        PacketTracer::RequestId(packetTracerClientName_, n));
  }
  tracerClientIdToProbeIdDelAll();
  status_->clientDel(id);
}

void ProbeSm::handlePacketTracerStatus(
    const PacketTracer::RequestId &requestId) {
  const Orv::U32 number = requestId.number();
  const Orv::U32 probeId = tracerClientIdToProbeId_[number];
  const Orv::Ptr<ClientStatus> clientStatus = status_->client(probeId);
  if (!clientStatus) {
    return;
  }
  bool complete = false;
  if (const Orv::Ptr<const PacketTracer::Result> result =
          packetTracerStatus_->result(requestId)) {
    ORV_TRACE(trace, 8, __PRETTY_FUNCTION__, " New status for ",
              requestId.name(), ":", number);
    clientStatus->resultIs(number, result);
    complete = clientStatus->result().size() == clientStatus->request().size();
  } else {
    ORV_TRACE(trace, 8, __PRETTY_FUNCTION__, " Deleted status for ",
              requestId.name(), ":", number);
    clientStatus->resultDel(number);
  }
  clientStatus->completeIs(complete);
}

Orv::Ptr<ProbeSm>
ProbeSmIs(Orv::Ptr<const Config> config, Orv::Ptr<Status> status,
          Orv::Ptr<PacketTracer::ClientConfig> packetTracerConfig,
          Orv::Ptr<const PacketTracer::ClientStatus> packetTracerStatus,
          std::string packetTracerClientName) {
  return Orv::make<ProbeSm>(
      std::move(config), std::move(status), std::move(packetTracerConfig),
      std::move(packetTracerStatus), std::move(packetTracerClientName));
}

} // namespace LspPing::PlatformProbe
