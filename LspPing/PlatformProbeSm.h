#pragma once

#include <string>

#include "LspPing/PlatformProbeConfig.h"
#include "LspPing/PlatformProbeStatus.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/Reactor.h"
#include "PacketTracer/ClientConfig.h"
#include "PacketTracer/ClientStatus.h"
#include "PacketTracer/RequestId.h"

namespace LspPing::PlatformProbe {

// Turns each configured probe into one packet-tracer request per destination
// address and copies the tracer's results back into the probe's status.
//
// Request numbers count up from 0 and are never reused while the machine
// lives. Deleting any probe empties the whole map from request number to
// probe id, the other probes' entries too: a result that arrives after that
// is looked up under probe id 0, and dropped if no probe 0 has a status.
// Only probes entering and leaving `config` are watched; a change inside a
// probe's configuration does not refile its requests.
class LSPPING_EXPORT ProbeSm : public Orv::Entity, public Orv::Reactor {
public:
  static constexpr Orv::Attr<Orv::U32> packetTracerClientIdAttr{1};
  static constexpr Orv::CollAttr<Orv::U32> tracerClientIdToProbeIdAttr{2};

  // Binds to `config` and `packetTracerStatus`; probes already configured
  // are not walked.
  ProbeSm(Orv::Ptr<const Config> config, Orv::Ptr<Status> status,
          Orv::Ptr<PacketTracer::ClientConfig> packetTracerConfig,
          Orv::Ptr<const PacketTracer::ClientStatus> packetTracerStatus,
          std::string packetTracerClientName);

  const Orv::Ptr<const Config> &config() const { return config_; }
  const Orv::Ptr<Status> &status() const { return status_; }
  const Orv::Ptr<PacketTracer::ClientConfig> &packetTracerConfig() const {
    return packetTracerConfig_;
  }
  const Orv::Ptr<const PacketTracer::ClientStatus> &packetTracerStatus() const {
    return packetTracerStatus_;
  }
  const std::string &packetTracerClientName() const {
    return packetTracerClientName_;
  }
  // The number the next request gets.
  Orv::U32 packetTracerClientId() const { return packetTracerClientId_; }
  const Orv::Coll<Orv::U32, Orv::U32> &tracerClientIdToProbeId() const {
    return tracerClientIdToProbeId_;
  }

  void onClient(Orv::U32 id);
  void onResult(const PacketTracer::RequestId &requestId);

  // Files the requests of probe `id`, which must be configured, under a
  // fresh status.
  void createProbeClient(Orv::U32 id);
  // Withdraws the requests of probe `id` and deletes its status.
  void destroyProbeClient(Orv::U32 id);
  // Copies the tracer's result for `requestId`, or its withdrawal, into the
  // status of the probe that filed it.
  void handlePacketTracerStatus(const PacketTracer::RequestId &requestId);

private:
  void handleProbeClient(Orv::U32 id);
  void packetTracerClientIdIs(Orv::U32 v) {
    assign(packetTracerClientId_, v, packetTracerClientIdAttr);
  }
  void packetTracerClientIdInc(Orv::U32 n) {
    packetTracerClientIdIs(packetTracerClientId_ + n);
  }
  void tracerClientIdToProbeIdIs(Orv::U32 number, Orv::U32 probeId) {
    tracerClientIdToProbeId_.is(number, probeId);
  }
  void tracerClientIdToProbeIdDelAll() { tracerClientIdToProbeId_.delAll(); }

  const Orv::Ptr<const Config> config_;
  const Orv::Ptr<Status> status_;
  const Orv::Ptr<PacketTracer::ClientConfig> packetTracerConfig_;
  const Orv::Ptr<const PacketTracer::ClientStatus> packetTracerStatus_;
  const std::string packetTracerClientName_;
  Orv::U32 packetTracerClientId_ = 0;
  Orv::Coll<Orv::U32, Orv::U32> tracerClientIdToProbeId_{
      *this, tracerClientIdToProbeIdAttr};
};

LSPPING_EXPORT Orv::Ptr<ProbeSm>
ProbeSmIs(Orv::Ptr<const Config> config, Orv::Ptr<Status> status,
          Orv::Ptr<PacketTracer::ClientConfig> packetTracerConfig,
          Orv::Ptr<const PacketTracer::ClientStatus> packetTracerStatus,
          std::string packetTracerClientName);

} // namespace LspPing::PlatformProbe
