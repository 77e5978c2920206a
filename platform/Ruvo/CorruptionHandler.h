#pragma once

#include <functional>
#include <string>

#include "Orv/Export.h"

namespace Ruvo {

// What a shared-memory table does when a lookup detects corruption: it is
// given the exception's message. The hosting agent typically reports it and
// schedules a resynchronisation of the table from its writer.
using CorruptionHandler = std::function<void(const std::string &message)>;

// The handler every table starts with: writes the message at level 0 under
// the trace source "Ruvo/ShmTable", so that corruption is never silent.
LSPPING_EXPORT void traceCorruption(const std::string &message);

} // namespace Ruvo
