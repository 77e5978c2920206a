#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Kiv/TimerWheel.h"
#include "Session/Client.h"
#include "Session/Host.h"
#include "Session/Reply.h"
#include "Session/Target.h"

namespace Session {

// An LSP ping: `count` requests `interval` seconds apart, the first at
// once, each answered or declared lost `timeout` seconds after it left.
// The library's transmit state machine sends them, as it sends any
// client's requests, unattended.
// Events come as they happen; `done` comes last, once every request is
// answered or lost (never for a ping without end), or at once when the
// ping cannot start.
class PingSession {
public:
  struct Options {
    // 0: without end.
    Orv::U32 count = 5;
    double interval = 1;
    double timeout = 2;
    Orv::U8 ttl = 255;
    // The TTLs of the first labels, outermost first, in place of `ttl`.
    std::vector<Orv::U8> labelTtls;
    // The requests' IP destination; unset: 127.0.0.1, or ::ffff:127.0.0.1
    // from an IPv6 source.
    Wirx::IpGenAddr dst;
  };

  struct Summary {
    // Why the ping stopped before its end: no path, or a client that
    // cannot send. Empty otherwise.
    std::string error;
    Orv::U32 sent = 0;
    Orv::U32 received = 0;
    // Round trips of the replies received, in microseconds.
    Orv::U32 minRoundTrip = 0;
    Orv::U32 maxRoundTrip = 0;
    Orv::U64 sumRoundTrip = 0;
    // Squares summed in a double: a U64 would overflow after a few million
    // round trips of seconds.
    double sumSquaredRoundTrip = 0;

    // Rounded to the microsecond; 0 with no reply.
    Orv::U32 avgRoundTrip() const {
      return received == 0 ? 0
                           : Orv::U32((sumRoundTrip + received / 2) / received);
    }
    // The mean deviation as ping reports it, the standard deviation of the
    // round trips, rounded to the microsecond; 0 with no reply.
    Orv::U32 mdevRoundTrip() const;
  };

  struct Events {
    std::function<void(const Reply &)> reply;
    std::function<void(Orv::U32 seq)> timeout;
    // Runs from the timer wheel: the session may be destroyed in it.
    std::function<void(const Summary &)> done;
  };

  // Client `clientId` of the host's client side is the session's until it
  // ends; ids are unique per host.
  PingSession(const Host &host, Orv::U32 clientId, const Target &target,
              const Options &options, Events events);
  PingSession(const PingSession &) = delete;
  PingSession &operator=(const PingSession &) = delete;

  const Summary &summary() const { return summary_; }

private:
  struct Outstanding {
    Orv::U32 seq;
    double deadline;
  };

  void handleSent(Orv::U32 seq);
  void handleTimeoutTimer();
  void handleReply(const Reply &reply);
  void lostUntil(double now);
  void timeoutTimerIs();
  void finish(std::string error);

  // Of the options, what is needed once the client is configured: a
  // monitor keeps thousands of sessions.
  const Orv::U32 count_;
  const double timeout_;
  Events events_;
  std::optional<Client> client_;
  Summary summary_;
  // Requests sent and not yet answered, oldest first.
  std::vector<Outstanding> outstanding_;
  bool finished_ = false;
  Kiv::Timer timeoutTimer_;
};

// The IP destination of requests from `src`: 127.0.0.1 in its family.
Wirx::IpGenAddr loopbackDestination(const Wirx::IpGenAddr &src);

} // namespace Session
