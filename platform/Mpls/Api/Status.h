#pragma once

#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace Mpls::Api {

// The MPLS agent's own status: whether MPLS forwarding is enabled on this
// router. Off until the agent says otherwise, so that a status nobody has
// written claims nothing.
class LSPPING_EXPORT Status : public Orv::NamedEntity {
public:
  static constexpr Orv::Attr<bool> mplsEnabledAttr{1};

  explicit Status(const Orv::Name &name) : NamedEntity(name) {}

  bool mplsEnabled() const { return mplsEnabled_; }
  void mplsEnabledIs(bool enabled) {
    assign(mplsEnabled_, enabled, mplsEnabledAttr);
  }

private:
  bool mplsEnabled_ = false;
};

} // namespace Mpls::Api
