#pragma once

#include <string>
#include <vector>

#include "LspPing/LspPingDownstreamLabelStack.h"
#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingReturnCode.h"
#include "Orv/Types.h"
#include "Session/Hop.h"
#include "Session/Path.h"
#include "Session/PingSession.h"
#include "Session/Reply.h"
#include "Session/Trace.h"
#include "Wirx/IpGenAddr.h"

// How sessions' results read for a network engineer, shared by every host's
// output. Codes and protocols go by the library's own names.
namespace Session {

// "labelMappingMismatch(10/1)": the code's name, its number, the subcode.
std::string codeText(LspPing::LspPingReturnCode code, Orv::U8 subcode);
// "labelMappingMismatch (code 10, subcode 1)", as a ping line reads.
std::string codeNameText(LspPing::LspPingReturnCode code, Orv::U8 subcode);
// Microseconds as milliseconds: "31.250".
std::string msText(Orv::U32 micros);
// "[2005 ldp]", top first, each label with its protocol; "[]" when empty.
std::string labelsText(const LspPing::LspPingDownstreamLabelStack &labels);
// "10.0.0.3  mtu 1500  labels [2005 ldp]", with "  intf A" when the mapping
// names an interface address of its own.
std::string mappingText(const LspPing::LspPingDownstreamMappingInfo &mapping);
// IPv4 destinations that share their first three bytes by ranges of the
// last: "127.0.0.1-3,7"; IPv6 ones one by one.
std::string destinationsText(const std::vector<Wirx::IpGenAddr> &destinations);
// One hop:
//   "  2  10.0.0.3         labelSwitchedAtStackDep(8/1)  mtu 1500  labels
//   [3 ldp]  time 62.500 ms"
// with the mapping the path goes on by (else the first), then a line per
// mapping when there are several; "  4  *" for a lost one. No line end.
std::string hopText(const Hop &hop);
// How the path ended: "egress 10.0.0.5 reached at TTL 3",
// "labelMappingMismatch(10/1) at 10.0.0.4, TTL 2", ...
std::string endText(const Path &path);
// The routers along the path: "10.0.0.2 -> 10.0.0.4", "*" for a hop that
// did not answer.
std::string routeText(const Path &path);
// A ping's reply: "seq=1 reply from 10.0.0.2: repRouterEgress (code 3,
// subcode 1) time=31.250 ms". No line end.
std::string pingReplyText(const Reply &reply);
// A ping's request left unanswered: "seq=3 no reply". No line end.
std::string pingLostText(Orv::U32 seq);
// The lines that close a ping of `name`, each with its line end:
//   "--- 10.0.0.2/32 LSP ping statistics ---"
//   "5 requests sent, 4 replies received, 20% loss"
//   "round-trip min/avg/max/mdev = 31.250/31.250/31.250/0.000 ms"
// the last only with a reply, and "stopped: REASON" when it stopped short.
std::string pingSummary(const std::string &name,
                        const PingSession::Summary &summary);
// The lines that close a trace of `name`, each with its line end:
//   "--- 10.0.0.5/32 LSP trace: egress 10.0.0.5 reached at TTL 3"
// or for a tree trace how many paths reach the egress, then a line per path
// that does not, with its routers and destinations, and the branches left
// out for the caps.
std::string traceSummary(const Trace &trace, const std::string &name);

} // namespace Session
