#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "Kiv/TimerWheel.h"
#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "Session/Client.h"
#include "Session/Host.h"
#include "Session/Trace.h"

namespace Session {

// An LSP trace: requests to 127.0.0.1 (::ffff:127.0.0.1 from an IPv6
// source, or the destination set) with TTL 1, 2, ... up to `maxTtl`, one at a
// time, each carrying the downstream mapping that the previous hop answered
// with (the first the ingress's own), until the egress answers, a hop answers
// with a code that ends the path (any but label-switched, 8, and no code, 0),
// `maxLost` hops in a row stay silent for `timeout` seconds each, or the TTL
// limit is reached. Where a hop has several mappings the request goes on with
// the first, and the next router to answer tells which it took.
//
// A tree trace follows every branch of the LSP. Its requests ask with a
// multipath bitset which of its IP destinations (127.0.0.1 and up, as many
// as `destinations`) go down which downstream mapping. Where a hop has
// several mappings and its answer does not share the destinations out
// among them (a responder that cannot tell echoes the question on its
// first mapping), the trace finds out itself: it sends one request per
// destination with one TTL more and sorts the destinations by the router
// that answers, matching each router to the mapping that names its address
// (or, failing that, to the one mapping left). Each branch is then traced
// on with requests to its own destinations. At most `maxFanout` branches
// leave one hop and `maxPaths` paths are followed; the rest are counted.
//
// `hop` reports each hop as it is answered or lost; `done` comes last, with
// every path, or at once when the trace cannot start.
class TraceSession {
public:
  struct Options {
    Orv::U8 maxTtl = 30;
    double timeout = 2;
    Orv::U32 maxLost = 3;
    bool tree = false;
    Orv::U32 destinations = 16;
    Orv::U32 maxFanout = 8;
    Orv::U32 maxPaths = 16;
    // The first destination, the others counting up from it in its last
    // byte; unset: 127.0.0.1, or ::ffff:127.0.0.1 from an IPv6 source.
    Wirx::IpGenAddr dst;
  };

  struct Events {
    std::function<void(const Hop &)> hop;
    // Runs from the timer wheel: the session may be destroyed in it.
    std::function<void(const Trace &)> done;
  };

  // At most this many destinations: they stay within 127.0.0.0/24.
  static constexpr Orv::U32 maxDestinations = 255;

  // Client `clientId` of the host's client side is the session's until it
  // ends; ids are unique per host.
  TraceSession(const Host &host, Orv::U32 clientId, const Target &target,
               const Options &options, Events events);
  TraceSession(const TraceSession &) = delete;
  TraceSession &operator=(const TraceSession &) = delete;

  const Trace &trace() const { return trace_; }

private:
  // A way being traced: its hops so far, the requests' destinations (in
  // `path.destinations`) and what the next request carries.
  struct Branch {
    Path path;
    LspPing::LspPingDownstreamMappingInfo dsMapping;
    Orv::U8 ttl = 1;
    Orv::U32 lost = 0;
  };
  // Destinations that go the same way out of a hop.
  struct Group {
    Wirx::IpGenAddr router;
    std::vector<Wirx::IpGenAddr> destinations;
    int mapping = -1;
  };
  enum class Waiting { nothing, hop, router };

  void handleReply(const Reply &reply);
  void handleTimer();
  void sendHop();
  void sendFinder();
  void send(Orv::U8 ttl, const LspPing::LspPingDownstreamMappingInfo &ds,
            const Wirx::IpGenAddr &dst, Waiting waiting);
  void hopAnswered(const Reply &reply);
  void wayIn(const Wirx::IpGenAddr &router);
  void hopLost();
  void goOn();
  void routerFound(const Wirx::IpGenAddr &router);
  void branchesIs(std::vector<Group> groups);
  void endBranch(Path::End end);
  void nextBranch();
  void finish();

  const Options options_;
  Events events_;
  Trace trace_;
  std::optional<Client> client_;
  Branch branch_;
  // Branches waiting their turn, the next one last.
  std::vector<Branch> pending_;
  // While finding where the branch's destinations go one hop on: the router
  // that answered for each, unset when none did.
  std::vector<Wirx::IpGenAddr> routers_;
  Waiting waiting_ = Waiting::nothing;
  Orv::U32 seq_ = 0;
  bool finished_ = false;
  Kiv::Timer timer_;
};

} // namespace Session
