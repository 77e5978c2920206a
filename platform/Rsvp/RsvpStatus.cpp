#include "Rsvp/RsvpStatus.h"

namespace Rsvp {

RsvpStatus::RsvpStatus(const Orv::Name &name) : NamedEntity(name) {}

RsvpStatus::SpStateTable &RsvpStatus::spStateTableIs() {
  if (!spState_) {
    spState_ =
        std::make_unique<SpStateTable>(name().stringValue() + "/spState");
  }
  return *spState_;
}

void RsvpStatus::spStateDel(const RsvpSpId &id) {
  if (spState_) {
    spState_->del(id);
  }
}

} // namespace Rsvp
