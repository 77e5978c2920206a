#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <string>

#include "Orv/Types.h"
#include "tools/MetricsText.h"

namespace LspPingTool {

// What `lspping responder` did with the frames its sockets took. Every
// frame is counted once as received and once as replied to, rate limited
// or dropped for a reason, so that received = replied + rateLimited + the
// drops.
class ResponderCounters {
public:
  void receivedInc(Orv::U64 n = 1) { received_ += n; }
  void repliedInc(Orv::U8 returnCode) { ++replies_[returnCode]; }
  void rateLimitedInc() { ++rateLimited_; }
  void droppedInc(const std::string &reason, Orv::U64 n = 1) {
    if (n != 0) {
      dropped_[reason] += n;
    }
  }

  Orv::U64 received() const { return received_; }
  Orv::U64 replied() const;
  Orv::U64 rateLimited() const { return rateLimited_; }
  Orv::U64 dropped() const;

  // "received N, replied N (NAME (CODE) N, ...), rate limited N, dropped N
  // (REASON N, ...)"
  std::string text() const;
  // {"event":"counters","received":N,"replied":N,"replies":{NAME:N},
  //  "rateLimited":N,"dropped":N,"drops":{REASON:N}}
  nlohmann::ordered_json json() const;
  // The lspping_responder_ families (see README).
  void writeMetrics(MetricsText &text) const;

private:
  Orv::U64 received_ = 0;
  std::map<Orv::U8, Orv::U64> replies_;
  Orv::U64 rateLimited_ = 0;
  std::map<std::string, Orv::U64> dropped_;
};

// The return code's name ("repRouterEgress"), or its number for one
// without a name.
std::string returnCodeName(Orv::U8 returnCode);

} // namespace LspPingTool
