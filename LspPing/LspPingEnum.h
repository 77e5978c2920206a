#pragma once

#include <string_view>

#include "Orv/Enum.h"
#include "Orv/Types.h"

namespace LspPing {

using Orv::S32;
using Orv::U16;
using Orv::U32;
using Orv::U64;
using Orv::U8;

// Every enumeration of this namespace prints its enumerator names.
using Orv::operator<<;
using Orv::stringValue;

} // namespace LspPing
