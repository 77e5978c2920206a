#pragma once

#include "LspPing/LspPingClientConfig.h"
#include "Orv/Coll.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace LspPing {

// All ping client configurations, keyed by client id (also the sender
// handle of the client's requests).
class LSPPING_EXPORT LspPingClientConfigColl : public Orv::NamedEntity {
public:
  explicit LspPingClientConfigColl(const Orv::Name &name) : NamedEntity(name) {}

  static constexpr Orv::CollAttr<U32> pingClientConfigAttr{1};

  const Orv::Coll<U32, Orv::Ptr<LspPingClientConfig>> &
  pingClientConfig() const {
    return pingClientConfig_;
  }
  // The client's configuration, or null.
  Orv::Ptr<LspPingClientConfig> pingClientConfig(U32 clientId) const {
    return pingClientConfig_[clientId];
  }
  // The existing configuration, or a new one with the defaults.
  Orv::Ptr<LspPingClientConfig> pingClientConfigIs(U32 clientId);
  void pingClientConfigDel(U32 clientId) { pingClientConfig_.del(clientId); }
  void pingClientConfigDelAll() { pingClientConfig_.delAll(); }

private:
  Orv::Coll<U32, Orv::Ptr<LspPingClientConfig>> pingClientConfig_{
      *this, pingClientConfigAttr};
};

LSPPING_EXPORT Orv::Ptr<LspPingClientConfigColl>
lspPingClientConfigCollFactory(const Orv::Name &name);

} // namespace LspPing
