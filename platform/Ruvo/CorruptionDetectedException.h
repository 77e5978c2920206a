#pragma once

#include <stdexcept>
#include <string>

#include "Orv/Export.h"

namespace Ruvo {

// Raised by a lookup in a shared-memory table whose entry for the key fails
// its consistency check (a writer died half-way, or the memory was
// overwritten). The text says which table and which key. Readers do not
// catch it themselves: ShmTable::find hands it to the table's corruption
// handler and reads the key as absent.
class LSPPING_EXPORT CorruptionDetectedException : public std::runtime_error {
public:
  explicit CorruptionDetectedException(const std::string &message)
      : std::runtime_error(message) {}
};

} // namespace Ruvo
