#pragma once

#include "Orv/Export.h"

// Fatal assertions mark broken invariants of our own code, never bad input.
// The expression is stringified after one round of macro expansion, so the
// message shows what the compiler saw (NULL reads as __null).
#define ORV_ASSERT_TEXT(...) #__VA_ARGS__
#define ORV_ASSERT_EXPANDED(expr, text)                                        \
  ((expr) ? static_cast<void>(0)                                               \
          : ::Orv::assertionFailed(text, __FILE__, __LINE__,                   \
                                   __PRETTY_FUNCTION__))
#define ORV_ASSERT(...)                                                        \
  ORV_ASSERT_EXPANDED((__VA_ARGS__), ORV_ASSERT_TEXT(__VA_ARGS__))

namespace Orv {

// Prints "Assertion failed: <text>" with the place, then ends the process.
[[noreturn]] LSPPING_EXPORT void assertionFailed(const char *text,
                                                 const char *file, int line,
                                                 const char *function) noexcept;

} // namespace Orv
