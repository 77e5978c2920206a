#pragma once

#include "Kiv/TimerWheel.h"
#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientRxMsgPipeColl.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Reactor.h"
#include "Wirx/UdpPam.h"

namespace LspPing {

// Reads the echo replies arriving on the client side's UDP packet-access
// module and posts each into the receive pipe of the client its sender
// handle names. Requests, replies from this agent's own responder and
// replies for unknown clients are dropped. One run works for at most
// `maxProcessTime` seconds; what is left waits for the next run.
class LSPPING_EXPORT LspPingClientListenerSm : public Orv::Object,
                                               public Orv::Reactor {
public:
  static constexpr double defaultMaxProcessTime = 0.005;

  LspPingClientListenerSm(
      Orv::Ptr<Wirx::UdpPam> udpPam,
      Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl,
      Orv::Ptr<Kiv::TimerWheel> timerWheel,
      Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl);

  const Orv::Ptr<Wirx::UdpPam> &udpPam() const { return udpPam_; }
  double maxProcessTime() const { return maxProcessTime_; }
  void maxProcessTimeIs(double seconds) { maxProcessTime_ = seconds; }
  bool initialized() const { return initialized_; }

  void handleInitialized();
  void handleUdpPamReadable();
  void handleDelete();

private:
  // Hands one received reply to its client; false when it was dropped.
  bool deliver(const Orv::Ptr<Wirx::Pkt> &pkt);

  const Orv::Ptr<Wirx::UdpPam> udpPam_;
  const Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl_;
  const Orv::Ptr<Kiv::TimerWheel> timerWheel_;
  const Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl_;
  // Brings a run that stopped on its deadline back for the rest.
  Kiv::Timer resumeTimer_;
  double maxProcessTime_ = defaultMaxProcessTime;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingClientListenerSm> lspPingClientListenerSmFactory(
    Orv::Ptr<Wirx::UdpPam> udpPam,
    Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl,
    Orv::Ptr<Kiv::TimerWheel> timerWheel,
    Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl);

} // namespace LspPing
