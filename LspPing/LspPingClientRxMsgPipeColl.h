#pragma once

#include "LspPing/LspPingMsgPipe.h"
#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace LspPing {

// The mailboxes of all ping clients, keyed by client id.
class LSPPING_EXPORT LspPingClientRxMsgPipeColl : public Orv::NamedEntity {
public:
  explicit LspPingClientRxMsgPipeColl(const Orv::Name &name)
      : NamedEntity(name) {}

  static constexpr Orv::CollAttr<U32> clientRxMsgPipeAttr{1};

  // The client's mailbox, or null.
  Orv::Ptr<LspPingMsgPipe> clientRxMsgPipe(U32 clientId) const {
    return clientRxMsgPipe_[clientId];
  }
  const Orv::Coll<U32, Orv::Ptr<LspPingMsgPipe>> &clientRxMsgPipe() const {
    return clientRxMsgPipe_;
  }
  void clientRxMsgPipeIs(U32 clientId, const Orv::Ptr<LspPingMsgPipe> &pipe) {
    clientRxMsgPipe_.is(clientId, pipe);
  }
  void clientRxMsgPipeDel(U32 clientId) { clientRxMsgPipe_.del(clientId); }
  void clientRxMsgPipeDelAll() { clientRxMsgPipe_.delAll(); }

private:
  Orv::Coll<U32, Orv::Ptr<LspPingMsgPipe>> clientRxMsgPipe_{
      *this, clientRxMsgPipeAttr};
};

LSPPING_EXPORT Orv::Ptr<LspPingClientRxMsgPipeColl>
lspPingClientRxMsgPipeCollFactory(const Orv::Name &name);

} // namespace LspPing
