#pragma once

#include <cstddef>

#include "LspPing/LspPingEnum.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/IntfId.h"

namespace LspPing {

// The ping clients that transmit on one interface: the reverse index that
// lets a change of the interface's packet-access module reach exactly the
// clients concerned. The configuration state machine keeps one per interface
// in use and drops it as soon as its last client leaves.
class LSPPING_EXPORT LspPingClientIntfIdMapping : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<U32> pingClientIdAttr{1};

  explicit LspPingClientIntfIdMapping(const Wirx::IntfId &intfId)
      : intfId_(intfId) {}

  const Wirx::IntfId &intfId() const { return intfId_; }
  // A set of client ids: every member maps to true.
  const Orv::Coll<U32, bool> &pingClientId() const { return pingClientId_; }
  bool pingClientId(U32 clientId) const {
    return pingClientId_.contains(clientId);
  }
  std::size_t pingClientIdCount() const { return pingClientId_.size(); }

  // Adds the client, or removes it when `member` is false.
  void pingClientIdIs(U32 clientId, bool member) {
    if (member) {
      pingClientId_.is(clientId, true);
    } else {
      pingClientId_.del(clientId);
    }
  }
  void pingClientIdDel(U32 clientId) { pingClientId_.del(clientId); }
  void pingClientIdDelAll() { pingClientId_.delAll(); }

private:
  const Wirx::IntfId intfId_;
  Orv::Coll<U32, bool> pingClientId_{*this, pingClientIdAttr};
};

inline Orv::Ptr<LspPingClientIntfIdMapping>
lspPingClientIntfIdMappingFactory(const Wirx::IntfId &intfId) {
  return Orv::make<LspPingClientIntfIdMapping>(intfId);
}

} // namespace LspPing
