#pragma once

#include "Orv/Types.h"
#include "Session/Reply.h"

namespace Session {

// One hop of a trace: what answered the request sent with TTL `ttl`.
struct Hop {
  Orv::U8 ttl = 0;
  // No reply came within the time-out; `reply` is then empty.
  bool lost = false;
  Reply reply;
  // The index of the mapping of `reply` that the path goes on by, or -1
  // when it ends here or the way on is not known.
  int next = -1;
};

} // namespace Session
