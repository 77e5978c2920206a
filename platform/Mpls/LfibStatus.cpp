#include "Mpls/LfibStatus.h"

namespace Mpls {

LfibStatus::LfibStatus(const Orv::Name &name)
    : NamedEntity(name), routeTable_(name.stringValue() + "/route"),
      viaSetTable_(name.stringValue() + "/viaSet"),
      viaTable_(name.stringValue() + "/via"),
      extFecViaTable_(name.stringValue() + "/extFecVia") {}

void LfibStatus::corruptionHandlerIs(const Ruvo::CorruptionHandler &handler) {
  routeTable_.corruptionHandlerIs(handler);
  viaSetTable_.corruptionHandlerIs(handler);
  viaTable_.corruptionHandlerIs(handler);
  extFecViaTable_.corruptionHandlerIs(handler);
}

} // namespace Mpls
