#pragma once

#include <string>

namespace LspPingTool {

// Why this process cannot open raw sockets, as one line ("cannot open raw
// sockets: Operation not permitted (raw sockets need root or
// CAP_NET_RAW)"); empty when it can. The kernel refuses a process without
// the privilege only when it opens one: asked at start, a program says so
// before it does anything else.
std::string rawSocketsRefused();

} // namespace LspPingTool
