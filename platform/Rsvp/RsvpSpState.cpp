#include "Rsvp/RsvpSpState.h"

#include <ostream>

namespace Rsvp {

std::ostream &operator<<(std::ostream &os, const RsvpSpState &state) {
  return os << Orv::valueText(state);
}

} // namespace Rsvp
