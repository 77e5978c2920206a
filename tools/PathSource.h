#pragma once

#include "Session/IngressPath.h"
#include "Session/Target.h"

namespace LspPingTool {

// Where the Linux host of sessions learns how a target's requests leave
// this host: by which interface, to which next hop and MAC address, with
// which labels, from which source. The host adds what the kernel says of
// the interface (its MAC address, its MTU). Today the command line names
// the path (CommandLinePaths); a control plane's labels are another
// possible source.
class PathSource {
public:
  virtual ~PathSource() = default;

  // The path, or its `error` saying why there is none.
  virtual Session::IngressPath
  ingressPath(const Session::Target &target) const = 0;
};

} // namespace LspPingTool
