#pragma once

#include "LspPing/PlatformProbeClientConfig.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"

namespace LspPing::PlatformProbe {

// Every configured probe, by probe id.
class LSPPING_EXPORT Config : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<Orv::U32> clientAttr{1};

  const Orv::Coll<Orv::U32, Orv::Ptr<ClientConfig>> &client() const {
    return client_;
  }
  Orv::Ptr<ClientConfig> client(Orv::U32 id) const { return client_[id]; }
  // Enters `clientConfig` under its id. Throws std::invalid_argument when it
  // is null.
  void clientIs(const Orv::Ptr<ClientConfig> &clientConfig);
  void clientDel(Orv::U32 id) { client_.del(id); }

private:
  Orv::Coll<Orv::U32, Orv::Ptr<ClientConfig>> client_{*this, clientAttr};
};

} // namespace LspPing::PlatformProbe
