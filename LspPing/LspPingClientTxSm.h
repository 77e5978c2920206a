#pragma once

#include "Kiv/TimerWheel.h"
#include "LspPing/LspPingClientConfig.h"
#include "LspPing/LspPingClientStatus.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Reactor.h"
#include "Wirx/Pam.h"

namespace LspPing {

class LspPingPktGen;

// Sends one ping client's echo requests: `pktDelay` after the client is
// enabled, then one every `txRate` seconds until `txCount` requests left,
// each written to the client's transmit packet-access module. Only `enabled`
// is watched: other changes take effect at the next request.
class LSPPING_EXPORT LspPingClientTxSm : public Orv::Object,
                                         public Orv::Reactor {
public:
  LspPingClientTxSm(U32 clientId,
                    Orv::Ptr<const LspPingClientConfig> lspPingClientConfig,
                    Orv::Ptr<LspPingClientStatus> lspPingClientStatus,
                    Orv::Ptr<Kiv::TimerWheel> timerWheel);

  U32 clientId() const { return clientId_; }
  const Orv::Ptr<const LspPingClientConfig> &lspPingClientConfig() const {
    return lspPingClientConfig_;
  }
  const Orv::Ptr<LspPingClientStatus> &lspPingClientStatus() const {
    return lspPingClientStatus_;
  }
  const Orv::Ptr<Kiv::TimerWheel> &timerWheel() const { return timerWheel_; }
  const Orv::Ptr<Wirx::Pam> &lspPingClientTxPam() const {
    return lspPingClientTxPam_;
  }
  // When the next request leaves; Kiv::Timer::never while none is due.
  double lspPingTxTimerTimeMin() const { return lspPingTxTimer_.timeMin(); }
  bool initialized() const { return initialized_; }

  void lspPingClientTxPamIs(const Orv::Ptr<Wirx::Pam> &pam) {
    lspPingClientTxPam_ = pam;
  }
  void lspPingClientTxPamDel() { lspPingClientTxPam_ = nullptr; }

  void handleInitialized();
  void handleConfig();
  void handleTimerExpired();
  void handleDelete();

private:
  void lspPingTxTimerTimeMinIs(double seconds) {
    lspPingTxTimer_.timeMinIs(seconds);
  }
  // Builds the request with sequence number `seq`; null when no packet
  // could be had.
  Orv::Ptr<Wirx::Pkt> echoRequest(U32 seq) const;
  void addLabelStack(LspPingPktGen &gen) const;
  void addIpAndUdpHdrs(LspPingPktGen &gen) const;
  void addTargetFecStack(LspPingPktGen &gen) const;
  void addDownstreamMapping(LspPingPktGen &gen) const;

  const U32 clientId_;
  const Orv::Ptr<const LspPingClientConfig> lspPingClientConfig_;
  const Orv::Ptr<LspPingClientStatus> lspPingClientStatus_;
  const Orv::Ptr<Kiv::TimerWheel> timerWheel_;
  Orv::Ptr<Wirx::Pam> lspPingClientTxPam_;
  Kiv::Timer lspPingTxTimer_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingClientTxSm> lspPingClientTxSmFactory(
    U32 clientId, Orv::Ptr<const LspPingClientConfig> lspPingClientConfig,
    Orv::Ptr<LspPingClientStatus> lspPingClientStatus,
    Orv::Ptr<Kiv::TimerWheel> timerWheel);

} // namespace LspPing
