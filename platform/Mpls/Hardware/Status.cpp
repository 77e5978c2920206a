#include "Mpls/Hardware/Status.h"

namespace Mpls::Hardware {

Status::Status(const Orv::Name &name)
    : NamedEntity(name), routeTable_(name.stringValue() + "/route") {}

} // namespace Mpls::Hardware
