#include "tools/LspMonitor.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "Orv/Clock.h"
#include "Session/Format.h"
#include "tools/ResponderCounters.h"

namespace LspPingTool {

namespace {

using LspPing::LspPingReturnCode;

PathHop pathHopOf(const Session::Hop &hop) {
  PathHop pathHop;
  if (hop.lost) {
    return pathHop;
  }
  pathHop.from = hop.reply.from.stringValue();
  if (hop.next >= 0 && std::size_t(hop.next) < hop.reply.mappings.size()) {
    const auto &stack = hop.reply.mappings[std::size_t(hop.next)].labelStack;
    for (Orv::U8 i = 0; i < stack.size; ++i) {
      pathHop.labels.push_back(stack.labelEntry[i].label().value());
    }
  }
  return pathHop;
}

// A probe that failed for a code that is not the egress's.
MonitorEvent wrongCode(const Session::Reply &reply, Orv::U32 hop) {
  MonitorEvent bad;
  bad.returnCode = Orv::U8(reply.code);
  bad.returnSubcode = reply.subcode;
  bad.from = reply.from.stringValue();
  bad.hop = hop;
  bad.reason = Session::codeNameText(reply.code, reply.subcode) + " from " +
               bad.from + (hop ? " at hop " + std::to_string(hop) : "");
  return bad;
}

MonitorEvent because(std::string reason, Orv::U32 hop = 0) {
  MonitorEvent bad;
  bad.reason = std::move(reason);
  bad.hop = hop;
  return bad;
}

} // namespace

LspMonitor::LspMonitor(const Session::Host &host, Orv::U32 clientId,
                       MonitoredLsp lsp, double start, EventSink events)
    : host_(host), clientId_(clientId), lsp_(std::move(lsp)),
      events_(std::move(events)),
      starter_(host.timerWheel(), [this] { handleStart(); }),
      firstStart_(start) {
  starter_.timeMinIs(start);
}

// The sessions go first: their clients are configured on the host.
LspMonitor::~LspMonitor() {
  ping_.reset();
  trace_.reset();
}

void LspMonitor::handleStart() {
  if (lsp_.trace) {
    startTrace();
  } else {
    startPing();
  }
}

void LspMonitor::startPing() {
  Session::PingSession::Options options;
  options.count = 0;
  options.interval = lsp_.interval;
  options.timeout = lsp_.timeout;
  options.dst = lsp_.lsp.dst;
  if (lsp_.lsp.ttlsSet) {
    options.labelTtls = lsp_.lsp.ttls;
  }
  Session::PingSession::Events events;
  events.reply = [this](const Session::Reply &reply) {
    handlePingReply(reply);
  };
  events.timeout = [this](Orv::U32) {
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%g", lsp_.timeout);
    probed(because("no reply within " + std::string(seconds) + " s"));
  };
  // A ping without end ends only when it cannot send: it is tried again
  // an interval later.
  events.done = [this](const Session::PingSession::Summary &summary) {
    requestsBefore_ += summary.sent;
    const std::string error = summary.error;
    ping_.reset();
    probed(because("cannot send: " + error));
    starter_.timeMinIs(Orv::now() + lsp_.interval);
  };
  ping_ = std::make_unique<Session::PingSession>(
      host_, clientId_, lsp_.lsp.target, options, std::move(events));
}

void LspMonitor::startTrace() {
  Session::TraceSession::Options options;
  options.maxTtl = lsp_.maxTtl;
  options.timeout = lsp_.timeout;
  options.dst = lsp_.lsp.dst;
  Session::TraceSession::Events events;
  events.hop = [this](const Session::Hop &hop) {
    if (!hop.lost) {
      replyCounted(hop.reply);
    }
  };
  events.done = [this](const Session::Trace &trace) {
    handleTraceDone(trace);
    trace_.reset();
  };
  trace_ = std::make_unique<Session::TraceSession>(
      host_, clientId_, lsp_.lsp.target, options, std::move(events));
}

void LspMonitor::handlePingReply(const Session::Reply &reply) {
  replyCounted(reply);
  rttObserved(reply.roundTrip);
  if (reply.code == LspPingReturnCode::repRouterEgress) {
    probed(std::nullopt);
  } else {
    probed(wrongCode(reply, 0));
  }
}

void LspMonitor::handleTraceDone(const Session::Trace &trace) {
  requestsBefore_ += trace.requests;
  // The next trace starts on the interval's beat after this one.
  const double now = Orv::now();
  starter_.timeMinIs(firstStart_ +
                     lsp_.interval *
                         (std::floor((now - firstStart_) / lsp_.interval) + 1));
  if (!trace.error.empty() || trace.paths.empty()) {
    probed(because("cannot send: " + trace.error));
    return;
  }
  const Session::Path &path = trace.paths.front();
  std::vector<PathHop> hops;
  const Session::Hop *last = nullptr;
  for (const Session::Hop &hop : path.hops) {
    hops.push_back(pathHopOf(hop));
    last = hop.lost ? last : &hop;
  }
  pathIs(std::move(hops));
  if (last) {
    rttObserved(last->reply.roundTrip);
  }
  switch (path.end) {
  case Session::Path::End::egress:
    probed(std::nullopt);
    break;
  case Session::Path::End::failed:
    probed(wrongCode(last->reply, last->ttl));
    break;
  default:
    probed(because(Session::endText(path),
                   path.hops.empty() ? 0 : path.hops.back().ttl));
    break;
  }
}

void LspMonitor::replyCounted(const Session::Reply &reply) {
  const auto code = Orv::U8(reply.code);
  auto it = std::lower_bound(
      replies_.begin(), replies_.end(), code,
      [](const auto &counted, Orv::U8 c) { return counted.first < c; });
  if (it == replies_.end() || it->first != code) {
    it = replies_.insert(it, {code, 0});
  }
  ++it->second;
  lastCode_ = code;
  lastSubcode_ = reply.subcode;
}

void LspMonitor::rttObserved(Orv::U32 micros) {
  const double seconds = micros / 1e6;
  const auto bucket =
      std::lower_bound(rttBounds.begin(), rttBounds.end(), seconds) -
      rttBounds.begin();
  ++rttCounts_[std::size_t(bucket)];
  rttSum_ += seconds;
}

void LspMonitor::probed(std::optional<MonitorEvent> bad) {
  ++probes_;
  if (bad) {
    ++(bad->returnCode ? wrong_ : lost_);
    if (lastBad_) {
      *lastBad_ = std::move(*bad);
    } else {
      lastBad_ = std::make_unique<MonitorEvent>(std::move(*bad));
    }
  }
  if (probes_ < lsp_.window) {
    return;
  }
  const bool passed =
      wrong_ == 0 && double(lost_) * 100 <= lsp_.lossThreshold * probes_;
  MonitorEvent event =
      passed || !lastBad_ ? MonitorEvent() : std::move(*lastBad_);
  event.kind = passed ? MonitorEvent::Kind::up : MonitorEvent::Kind::down;
  event.lsp = lsp_.name;
  event.fec = lsp_.lsp.fec;
  event.trace = lsp_.trace;
  event.was = !up_ ? "" : *up_ ? "up" : "down";
  event.probes = probes_;
  event.failed = wrong_ + lost_;
  const bool changed = up_ != passed;
  up_ = passed;
  probes_ = wrong_ = lost_ = 0;
  lastBad_.reset();
  if (changed && events_) {
    events_(event);
  }
}

void LspMonitor::pathIs(std::vector<PathHop> path) {
  if (path_ && *path_ != path) {
    ++pathChanges_;
    const auto [old, now] =
        std::mismatch(path_->begin(), path_->end(), path.begin(), path.end());
    MonitorEvent event;
    event.kind = MonitorEvent::Kind::pathChanged;
    event.lsp = lsp_.name;
    event.fec = lsp_.lsp.fec;
    event.trace = true;
    event.hop = Orv::U32(now - path.begin()) + 1;
    if (old != path_->end()) {
      event.before = *old;
    }
    if (now != path.end()) {
      event.after = *now;
    }
    event.path = path;
    path_ = std::move(path);
    if (events_) {
      events_(event);
    }
    return;
  }
  path_ = std::move(path);
}

Orv::U64 LspMonitor::requests() const {
  return requestsBefore_ + (ping_ ? ping_->summary().sent : 0) +
         (trace_ ? trace_->trace().requests : 0);
}

void LspMonitor::writeMetrics(MetricsText &text,
                              const std::vector<const LspMonitor *> &monitors) {
  text.family("lspping_lsp_info", "gauge",
              "An LSP the monitor watches: its FEC and mode; always 1.");
  for (const LspMonitor *m : monitors) {
    text.sample("lspping_lsp_info",
                {{"lsp", m->lsp_.name},
                 {"fec", m->lsp_.lsp.fec},
                 {"mode", m->lsp_.trace ? "trace" : "ping"},
                 {"interface", m->lsp_.lsp.target.intf.name()}},
                Orv::U64(1));
  }
  text.family("lspping_lsp_requests_total", "counter",
              "Echo requests sent on the LSP.");
  for (const LspMonitor *m : monitors) {
    text.sample("lspping_lsp_requests_total", {{"lsp", m->lsp_.name}},
                m->requests());
  }
  text.family("lspping_lsp_replies_total", "counter",
              "Echo replies received for the LSP, by return code name.");
  for (const LspMonitor *m : monitors) {
    for (const auto &[code, count] : m->replies_) {
      text.sample("lspping_lsp_replies_total",
                  {{"lsp", m->lsp_.name}, {"code", returnCodeName(code)}},
                  count);
    }
  }
  text.family("lspping_lsp_rtt_seconds", "histogram",
              "Round trips of the LSP's replies (a trace: of its last hop).");
  for (const LspMonitor *m : monitors) {
    text.histogram("lspping_lsp_rtt_seconds", {{"lsp", m->lsp_.name}},
                   rttBounds, m->rttCounts_, m->rttSum_);
  }
  text.family("lspping_lsp_up", "gauge",
              "1 when the LSP's last window met its loss threshold with "
              "the egress's replies, else 0; absent before the first "
              "window ends.");
  for (const LspMonitor *m : monitors) {
    if (m->up_) {
      text.sample("lspping_lsp_up", {{"lsp", m->lsp_.name}},
                  Orv::U64(*m->up_ ? 1 : 0));
    }
  }
  text.family("lspping_lsp_last_return_code", "gauge",
              "The return code of the LSP's last reply.");
  for (const LspMonitor *m : monitors) {
    if (m->lastCode_) {
      text.sample("lspping_lsp_last_return_code", {{"lsp", m->lsp_.name}},
                  Orv::U64(*m->lastCode_));
    }
  }
  text.family("lspping_lsp_last_return_subcode", "gauge",
              "The return subcode of the LSP's last reply.");
  for (const LspMonitor *m : monitors) {
    if (m->lastCode_) {
      text.sample("lspping_lsp_last_return_subcode", {{"lsp", m->lsp_.name}},
                  Orv::U64(m->lastSubcode_));
    }
  }
  text.family("lspping_lsp_hops", "gauge",
              "Hops of the LSP's last trace (trace mode).");
  for (const LspMonitor *m : monitors) {
    if (m->path_) {
      text.sample("lspping_lsp_hops", {{"lsp", m->lsp_.name}},
                  Orv::U64(m->path_->size()));
    }
  }
  text.family("lspping_lsp_path_changes_total", "counter",
              "Times the LSP's traced path changed (trace mode).");
  for (const LspMonitor *m : monitors) {
    if (m->lsp_.trace) {
      text.sample("lspping_lsp_path_changes_total", {{"lsp", m->lsp_.name}},
                  m->pathChanges_);
    }
  }
}

} // namespace LspPingTool
