#pragma once

#include "tools/PathSource.h"

namespace LspPingTool {

// The path the command line names for a target, as the target carries it:
// its labels (none: plain IP), interface, next hop, the next hop's MAC
// address and source, what the command line left out filled in from the
// kernel before the sessions start (KernelPaths).
class CommandLinePaths : public PathSource {
public:
  Session::IngressPath
  ingressPath(const Session::Target &target) const override;
};

} // namespace LspPingTool
