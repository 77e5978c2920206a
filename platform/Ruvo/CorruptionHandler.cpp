#include "Ruvo/CorruptionHandler.h"

#include "Orv/Trace.h"

namespace Ruvo {

void traceCorruption(const std::string &message) {
  static const Orv::TraceSource trace("Ruvo/ShmTable");
  ORV_TRACE(trace, 0, message);
}

} // namespace Ruvo
