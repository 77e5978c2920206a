#pragma once

#include "LspPing/LspPingClientRxSm.h"
#include "LspPing/LspPingClientTxSm.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace LspPing {

// The transmit and receive state machines of every ping client, keyed by
// client id. Removing one runs its handleDelete first.
class LSPPING_EXPORT LspPingClientSmColl : public Orv::NamedEntity {
public:
  explicit LspPingClientSmColl(const Orv::Name &name) : NamedEntity(name) {}

  static constexpr Orv::CollAttr<U32> pingClientTxSmAttr{1};
  static constexpr Orv::CollAttr<U32> pingClientRxSmAttr{2};

  Orv::Ptr<LspPingClientTxSm> pingClientTxSm(U32 clientId) const {
    return pingClientTxSm_[clientId];
  }
  Orv::Ptr<LspPingClientRxSm> pingClientRxSm(U32 clientId) const {
    return pingClientRxSm_[clientId];
  }
  const Orv::Coll<U32, Orv::Ptr<LspPingClientTxSm>> &pingClientTxSm() const {
    return pingClientTxSm_;
  }
  const Orv::Coll<U32, Orv::Ptr<LspPingClientRxSm>> &pingClientRxSm() const {
    return pingClientRxSm_;
  }

  // Each creates the state machine when absent and returns it.
  Orv::Ptr<LspPingClientTxSm>
  pingClientTxSmIs(U32 clientId,
                   const Orv::Ptr<const LspPingClientConfig> &config,
                   const Orv::Ptr<LspPingClientStatus> &status,
                   const Orv::Ptr<Kiv::TimerWheel> &timerWheel);
  Orv::Ptr<LspPingClientRxSm>
  pingClientRxSmIs(U32 clientId,
                   const Orv::Ptr<const LspPingClientConfig> &config,
                   const Orv::Ptr<LspPingClientStatus> &status,
                   const Orv::Ptr<LspPingMsgPipe> &rxMsgPipe);
  void pingClientTxSmDel(U32 clientId);
  void pingClientRxSmDel(U32 clientId);
  void pingClientTxSmDelAll();
  void pingClientRxSmDelAll();

private:
  Orv::Coll<U32, Orv::Ptr<LspPingClientTxSm>> pingClientTxSm_{
      *this, pingClientTxSmAttr};
  Orv::Coll<U32, Orv::Ptr<LspPingClientRxSm>> pingClientRxSm_{
      *this, pingClientRxSmAttr};
};

LSPPING_EXPORT Orv::Ptr<LspPingClientSmColl>
lspPingClientSmCollFactory(const Orv::Name &name);

} // namespace LspPing
