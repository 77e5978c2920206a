#pragma once

#include <memory>

#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Rsvp/RsvpSpId.h"
#include "Rsvp/RsvpSpState.h"
#include "Ruvo/ShmTable.h"

namespace Rsvp {

// What RSVP-TE publishes about the paths it signals: the path states by
// session and path identifier. The path-state table exists only once RSVP
// has started publishing, so spState() is null before that (and after
// spStateTableDel()); a reader treats that like a router without RSVP. The
// table is named "<name>/spState" in corruption messages.
class LSPPING_EXPORT RsvpStatus : public Orv::NamedEntity {
public:
  using SpStateTable = Ruvo::ShmTable<RsvpSpId, RsvpSpState>;

  explicit RsvpStatus(const Orv::Name &name);

  // The path-state table, or null when RSVP publishes none.
  const SpStateTable *spState() const { return spState_.get(); }
  SpStateTable *spState() { return spState_.get(); }
  // The path-state table, created empty if there is none yet.
  SpStateTable &spStateTableIs();
  void spStateTableDel() { spState_.reset(); }

  // Stores a path state, creating the table if need be.
  void spStateIs(const RsvpSpId &id, const RsvpSpState &state) {
    spStateTableIs().is(id, state);
  }
  // Removes a path state; the table stays, if empty.
  void spStateDel(const RsvpSpId &id);

private:
  std::unique_ptr<SpStateTable> spState_;
};

} // namespace Rsvp
