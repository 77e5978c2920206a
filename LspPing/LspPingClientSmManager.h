#pragma once

#include "Kiv/TimerWheel.h"
#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientRxMsgPipeColl.h"
#include "LspPing/LspPingClientSmColl.h"
#include "LspPing/LspPingClientStatusColl.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Reactor.h"

namespace LspPing {

// Gives every configured ping client its machinery: status entry, receive
// pipe, receive and transmit state machines, created when the configuration
// appears and removed with it.
class LSPPING_EXPORT LspPingClientSmManager : public Orv::Object,
                                              public Orv::Reactor {
public:
  LspPingClientSmManager(
      Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl,
      Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl,
      Orv::Ptr<LspPingClientSmColl> lspPingClientSmColl,
      Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl,
      Orv::Ptr<Kiv::TimerWheel> timerWheel);

  bool initialized() const { return initialized_; }

  void handleInitialized();
  void handleClientConfig(U32 clientId);
  void handleClientCreate(U32 clientId);
  void handleClientDelete(U32 clientId);

private:
  const Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl_;
  const Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl_;
  const Orv::Ptr<LspPingClientSmColl> lspPingClientSmColl_;
  const Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl_;
  const Orv::Ptr<Kiv::TimerWheel> timerWheel_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingClientSmManager> lspPingClientSmManagerFactory(
    Orv::Ptr<const LspPingClientConfigColl> lspPingClientConfigColl,
    Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl,
    Orv::Ptr<LspPingClientSmColl> lspPingClientSmColl,
    Orv::Ptr<LspPingClientRxMsgPipeColl> lspPingClientRxMsgPipeColl,
    Orv::Ptr<Kiv::TimerWheel> timerWheel);

} // namespace LspPing
