#pragma once

#include "Interface/EthDevPamCollection.h"
#include "Kiv/TimerWheel.h"
#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientIntfIdMapping.h"
#include "LspPing/LspPingClientSmColl.h"
#include "LspPing/LspPingClientStatusColl.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/Reactor.h"
#include "Wirx/IntfId.h"

namespace LspPing {

// Stands between the configured ping clients and their transmit state
// machines. For every client it
//  - keeps the client in a reverse index from transmit interface to clients,
//    so that an interface's packet-access module coming or going reaches
//    exactly the clients on it;
//  - hands the client's transmit state machine the raw Ethernet module of its
//    transmit interface, or takes it away;
//  - checks the configuration and writes the verdict back as `reason`, then
//    `enabled`: the first failing check names the reason, "Enabled" when all
//    pass.
// A bad configuration is never refused, only reported. Every client must
// already have its transmit state machine: the state-machine manager creates
// it with the configuration, before this machine hears of the client.
class LSPPING_EXPORT LspPingClientConfigSm : public Orv::Entity,
                                             public Orv::Reactor {
public:
  // Follows one client's configuration and re-checks the client whenever one
  // of the attributes that the checks or the module choice read changes.
  // Only those: its owner's own writes of `reason` and `enabled` must not
  // bring it back.
  class ClientConfigReactor : public Orv::Object, public Orv::Reactor {
  public:
    // Binds to `config` and checks the client at once (nothing happens
    // while the owner is not initialized; it catches up then).
    ClientConfigReactor(LspPingClientConfigSm &owner,
                        Orv::Ptr<LspPingClientConfig> config);

    U32 clientId() const { return lspPingClientConfig_->clientId(); }
    const Orv::Ptr<LspPingClientConfig> &lspPingClientConfig() const {
      return lspPingClientConfig_;
    }
    // The interface under which the client sits in the reverse index; empty
    // while it sits under none.
    const Wirx::IntfId &prevTxIntfId() const { return prevTxIntfId_; }

    void handleClientConfig();

  private:
    // Not counted: the owner holds this reactor, and a counted reference
    // back would keep both alive for ever.
    LspPingClientConfigSm &owner_;
    const Orv::Ptr<LspPingClientConfig> lspPingClientConfig_;
    Wirx::IntfId prevTxIntfId_;
  };

  static constexpr Orv::CollAttr<U32> clientConfigAttr{1};
  static constexpr Orv::CollAttr<Wirx::IntfId> pingClientIntfIdMappingCollAttr{
      2};

  // `ethDevPamCollection` may be null: no client gets a module then.
  LspPingClientConfigSm(
      Orv::Ptr<LspPingClientConfigColl> lspPingClientConfigColl,
      Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl,
      Orv::Ptr<const LspPingClientSmColl> lspPingClientSmColl,
      Orv::Ptr<const Interface::EthDevPamCollection> ethDevPamCollection,
      Orv::Ptr<Kiv::TimerWheel> timerWheel);
  ~LspPingClientConfigSm() override;

  const Orv::Ptr<LspPingClientConfigColl> &lspPingClientConfigColl() const {
    return lspPingClientConfigColl_;
  }
  const Orv::Ptr<LspPingClientStatusColl> &lspPingClientStatusColl() const {
    return lspPingClientStatusColl_;
  }
  const Orv::Ptr<const LspPingClientSmColl> &lspPingClientSmColl() const {
    return lspPingClientSmColl_;
  }
  const Orv::Ptr<const Interface::EthDevPamCollection> &
  ethDevPamCollection() const {
    return ethDevPamCollection_;
  }
  const Orv::Ptr<Kiv::TimerWheel> &timerWheel() const { return timerWheel_; }
  bool initialized() const { return initialized_; }

  // One reactor per configured client.
  const Orv::Coll<U32, Orv::Ptr<ClientConfigReactor>> &clientConfig() const {
    return clientConfig_;
  }
  Orv::Ptr<ClientConfigReactor> clientConfig(U32 clientId) const {
    return clientConfig_[clientId];
  }
  // The reverse index: an interface has an entry only while some client
  // sits under it. A deleted client stays under its last interface, and
  // later fan-outs pass over it.
  const Orv::Coll<Wirx::IntfId, Orv::Ptr<LspPingClientIntfIdMapping>> &
  pingClientIntfIdMappingColl() const {
    return pingClientIntfIdMappingColl_;
  }
  Orv::Ptr<LspPingClientIntfIdMapping>
  pingClientIntfIdMapping(const Wirx::IntfId &intfId) const {
    return pingClientIntfIdMappingColl_[intfId];
  }

  void handleInitialized();
  // An interface's module came, was replaced or went: re-checks every
  // client on that interface.
  void handleDevicePam(const Wirx::IntfId &intfId);
  // Stops all work, so that tearing the reactors down triggers none.
  void handleDelete();

private:
  void onPingClientConfig(U32 clientId);
  void onIntfPam(const Wirx::IntfId &intfId);

  void clientConfigIs(const Orv::Ptr<LspPingClientConfig> &config);
  void clientConfigDel(U32 clientId);

  void updateMapping(U32 clientId, const Wirx::IntfId &prevTxIntfId);
  void updateClientConfig(U32 clientId);
  void updateTxPam(U32 clientId);
  void computeEnabled(U32 clientId);
  // The client's transmit state machine, which must exist.
  Orv::Ptr<LspPingClientTxSm> pingClientTxSm(U32 clientId) const;

  const Orv::Ptr<LspPingClientConfigColl> lspPingClientConfigColl_;
  const Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl_;
  const Orv::Ptr<const LspPingClientSmColl> lspPingClientSmColl_;
  const Orv::Ptr<const Interface::EthDevPamCollection> ethDevPamCollection_;
  const Orv::Ptr<Kiv::TimerWheel> timerWheel_;
  bool initialized_ = false;
  Orv::Coll<U32, Orv::Ptr<ClientConfigReactor>> clientConfig_{*this,
                                                              clientConfigAttr};
  Orv::Coll<Wirx::IntfId, Orv::Ptr<LspPingClientIntfIdMapping>>
      pingClientIntfIdMappingColl_{*this, pingClientIntfIdMappingCollAttr};
};

LSPPING_EXPORT Orv::Ptr<LspPingClientConfigSm> lspPingClientConfigSmFactory(
    Orv::Ptr<LspPingClientConfigColl> lspPingClientConfigColl,
    Orv::Ptr<LspPingClientStatusColl> lspPingClientStatusColl,
    Orv::Ptr<const LspPingClientSmColl> lspPingClientSmColl,
    Orv::Ptr<const Interface::EthDevPamCollection> ethDevPamCollection,
    Orv::Ptr<Kiv::TimerWheel> timerWheel);

} // namespace LspPing
