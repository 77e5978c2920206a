#pragma once

#include <string>
#include <vector>

#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "Orv/Types.h"
#include "Session/IngressPath.h"
#include "Session/Path.h"
#include "Session/Target.h"

namespace Session {

// What a trace found: one path, or for a tree trace one per branch, in the
// order they ended.
struct Trace {
  Target target;
  // Whether every branch was followed, or one path.
  bool tree = false;
  // Where the requests left the ingress.
  IngressPath ingress;
  // The ingress's own downstream mapping, which the first request carried;
  // invalid when there was none.
  LspPing::LspPingDownstreamMappingInfo ingressMapping;
  // Why the trace stopped short: no path at the ingress, or a client that
  // cannot send. Empty otherwise.
  std::string error;
  std::vector<Path> paths;
  // Branches seen but not followed, for the caps on fan-out and paths.
  Orv::U32 branchesNotFollowed = 0;
  // Echo requests sent, those that find the branches included.
  Orv::U32 requests = 0;

  // Whether every path followed ends at the egress.
  bool reachedEgress() const {
    if (paths.empty()) {
      return false;
    }
    for (const Path &path : paths) {
      if (path.end != Path::End::egress) {
        return false;
      }
    }
    return true;
  }
};

} // namespace Session
