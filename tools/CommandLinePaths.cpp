#include "tools/CommandLinePaths.h"

namespace LspPingTool {

Session::IngressPath
CommandLinePaths::ingressPath(const Session::Target &target) const {
  Session::IngressPath path;
  path.intf = target.intf;
  path.src = target.src;
  path.nexthop = target.nexthop;
  path.nexthopEthAddr = target.nexthopEthAddr;
  path.labels = target.labels;
  if (!path.intf) {
    path.error = "no interface to send on";
  } else if (!path.nexthopEthAddr) {
    path.error = path.intf.name() + ": no next hop's MAC address";
  } else if (!path.src) {
    path.error = path.intf.name() + ": no source address";
  }
  return path;
}

} // namespace LspPingTool
