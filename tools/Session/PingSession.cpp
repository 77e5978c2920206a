#include "Session/PingSession.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Orv/Clock.h"

namespace Session {

Wirx::IpGenAddr loopbackDestination(const Wirx::IpGenAddr &src) {
  if (src.isIpv6()) {
    return Wirx::Ip6Addr(Wirx::Ip6Addr::Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                              0xff, 0xff, 127, 0, 0, 1});
  }
  return Wirx::IpAddr(0x7f000001);
}

Orv::U32 PingSession::Summary::mdevRoundTrip() const {
  if (received == 0) {
    return 0;
  }
  const double mean = double(sumRoundTrip) / received;
  const double variance = sumSquaredRoundTrip / received - mean * mean;
  return Orv::U32(std::lround(std::sqrt(std::max(variance, 0.0))));
}

PingSession::PingSession(const Host &host, Orv::U32 clientId,
                         const Target &target, const Options &options,
                         Events events)
    : count_(options.count), timeout_(options.timeout),
      events_(std::move(events)),
      timeoutTimer_(host.timerWheel(), [this] { handleTimeoutTimer(); }) {
  const IngressPath ingress = host.ingressPath(target);
  if (std::string error = unusable(ingress); !error.empty()) {
    finish(std::move(error));
    return;
  }
  const Wirx::IpGenAddr dst =
      !options.dst ? loopbackDestination(ingress.src) : options.dst;
  client_.emplace(host, clientId, LspPing::LspPingMode::modeLspPing, target,
                  ingress, [this](const Reply &reply) { handleReply(reply); });
  if (!client_->requestsIs(options.count, options.interval, options.ttl,
                           options.labelTtls, dst,
                           [this](Orv::U32 seq) { handleSent(seq); })) {
    finish(client_->reason());
  }
}

void PingSession::handleSent(Orv::U32 seq) {
  if (finished_) {
    return;
  }
  ++summary_.sent;
  outstanding_.push_back(Outstanding{seq, Orv::now() + timeout_});
  timeoutTimerIs();
}

// Also where a finished session reports, from the wheel rather than from
// within the library's reactions, so that its owner may destroy it.
void PingSession::handleTimeoutTimer() {
  if (finished_) {
    client_.reset();
    if (events_.done) {
      events_.done(summary_);
    }
    return;
  }
  lostUntil(Orv::now());
}

void PingSession::handleReply(const Reply &reply) {
  if (finished_) {
    return;
  }
  const auto it =
      std::find_if(outstanding_.begin(), outstanding_.end(),
                   [&](const Outstanding &o) { return o.seq == reply.seq; });
  if (it == outstanding_.end()) {
    return;
  }
  outstanding_.erase(it);
  summary_.minRoundTrip =
      summary_.received == 0 ? reply.roundTrip
                             : std::min(summary_.minRoundTrip, reply.roundTrip);
  summary_.maxRoundTrip = std::max(summary_.maxRoundTrip, reply.roundTrip);
  summary_.sumRoundTrip += reply.roundTrip;
  summary_.sumSquaredRoundTrip += double(reply.roundTrip) * reply.roundTrip;
  ++summary_.received;
  if (events_.reply) {
    events_.reply(reply);
  }
  lostUntil(Orv::now());
}

// Declares lost what is due by `now`, and ends the ping once nothing is
// left to send or to wait for.
void PingSession::lostUntil(double now) {
  while (!outstanding_.empty() && outstanding_.front().deadline <= now) {
    const Orv::U32 seq = outstanding_.front().seq;
    outstanding_.erase(outstanding_.begin());
    if (events_.timeout) {
      events_.timeout(seq);
    }
  }
  if (count_ != 0 && summary_.sent == count_ && outstanding_.empty()) {
    finish("");
    return;
  }
  timeoutTimerIs();
}

void PingSession::timeoutTimerIs() {
  timeoutTimer_.timeMinIs(outstanding_.empty() ? Kiv::Timer::never
                                               : outstanding_.front().deadline);
}

void PingSession::finish(std::string error) {
  finished_ = true;
  summary_.error = std::move(error);
  timeoutTimer_.timeMinIs(Orv::now());
}

} // namespace Session
