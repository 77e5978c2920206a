#pragma once

#include <stdexcept>
#include <string>

#include "Orv/Export.h"

namespace Orv {

// Raised when a bounded platform value is given a number outside its range.
// The text names the bound, for example
// "MplsLabel::value < MplsLabel::min or > MplsLabel::luWithdraw not allowed".
class LSPPING_EXPORT RangeError : public std::out_of_range {
public:
  explicit RangeError(const std::string &text) : std::out_of_range(text) {}
};

} // namespace Orv
