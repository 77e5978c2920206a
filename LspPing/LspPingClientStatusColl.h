#pragma once

#include "LspPing/LspPingClientStatus.h"
#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace LspPing {

// The status of every ping client, keyed by client id.
class LSPPING_EXPORT LspPingClientStatusColl : public Orv::NamedEntity {
public:
  explicit LspPingClientStatusColl(const Orv::Name &name) : NamedEntity(name) {}

  static constexpr Orv::CollAttr<U32> pingClientStatusAttr{1};

  const Orv::Coll<U32, Orv::Ptr<LspPingClientStatus>> &
  pingClientStatus() const {
    return pingClientStatus_;
  }
  Orv::Ptr<LspPingClientStatus> pingClientStatus(U32 clientId) const {
    return pingClientStatus_[clientId];
  }
  // The existing status, or a new one.
  Orv::Ptr<LspPingClientStatus> pingClientStatusIs(U32 clientId);
  void pingClientStatusDel(U32 clientId) { pingClientStatus_.del(clientId); }
  void pingClientStatusDelAll() { pingClientStatus_.delAll(); }

private:
  Orv::Coll<U32, Orv::Ptr<LspPingClientStatus>> pingClientStatus_{
      *this, pingClientStatusAttr};
};

LSPPING_EXPORT Orv::Ptr<LspPingClientStatusColl>
lspPingClientStatusCollFactory(const Orv::Name &name);

} // namespace LspPing
