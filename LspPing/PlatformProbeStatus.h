#pragma once

#include "LspPing/PlatformProbeClientStatus.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"

namespace LspPing::PlatformProbe {

// The status of every probe, by probe id.
class LSPPING_EXPORT Status : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<Orv::U32> clientAttr{1};

  const Orv::Coll<Orv::U32, Orv::Ptr<ClientStatus>> &client() const {
    return client_;
  }
  Orv::Ptr<ClientStatus> client(Orv::U32 id) const { return client_[id]; }
  // Enters `clientStatus` under its id, replacing any earlier one. Throws
  // std::invalid_argument when it is null.
  void clientIs(const Orv::Ptr<ClientStatus> &clientStatus);
  void clientDel(Orv::U32 id) { client_.del(id); }

private:
  Orv::Coll<Orv::U32, Orv::Ptr<ClientStatus>> client_{*this, clientAttr};
};

} // namespace LspPing::PlatformProbe
