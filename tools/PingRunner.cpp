#include "tools/PingRunner.h"

#include <algorithm>
#include <csignal>
#include <map>
#include <set>
#include <system_error>

#include "Orv/Clock.h"
#include "Session/TraceDot.h"
#include "tools/ExitStatus.h"
#include "tools/KernelPaths.h"
#include "tools/RawSockets.h"
#include "tools/StatePaths.h"

namespace LspPingTool {

namespace {

// How long the kernel is given to find a next hop's MAC address, as ping's
// first requests would wait for it.
constexpr double neighbourTimeout = 3.0;
// Sessions started in one turn of the loop at most.
constexpr std::size_t startBatch = 64;

std::string secondsText(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", seconds);
  return text;
}

} // namespace

PingRunner::PingRunner(PingRun run, std::ostream &out, std::ostream &log)
    : run_(std::move(run)), out_(out), log_(log),
      host_(loop_, paths_,
            [this](const std::string &line) { this->log("", line); }),
      report_(out, loop_.wheel(), run_.style), entries_(run_.lsps.size()),
      starter_(loop_.wheel(), [this] { startDue(); }) {}

// The sessions go before the host whose client side they configure.
PingRunner::~PingRunner() {
  signals_.reset();
  entries_.clear();
}

int PingRunner::run() {
  if (!prepare()) {
    return exitError;
  }
  try {
    signals_ = std::make_unique<SignalFd>(
        loop_, std::initializer_list<int>{SIGINT, SIGTERM},
        [this](int) { loop_.stop(); });
  } catch (const std::system_error &e) {
    log("", std::string("cannot take signals: ") + e.what());
    return exitError;
  }
  nameLsps();
  firstStart_ = Orv::now();
  startDue();
  if (finished_ < entries_.size()) {
    loop_.run();
  }
  summariseUnfinished();
  out_.flush();
  int status = exitOk;
  for (const Entry &entry : entries_) {
    status = std::max(status, entry.status);
  }
  return status;
}

bool PingRunner::prepare() {
  if (const std::string refused = rawSocketsRefused(); !refused.empty()) {
    log("", refused);
    return false;
  }
  std::string error;
  if (!host_.open(error)) {
    log("", error);
    return false;
  }
  const auto routes = KernelRoutes::open(error);
  if (!routes) {
    log("", error);
    return false;
  }
  if (!labelsFromState()) {
    return false;
  }
  const KernelPaths kernel(*routes, host_.intfs(), host_.ipv4(), host_.ipv6());
  for (Lsp &lsp : run_.lsps) {
    if (error = kernel.route(lsp); !error.empty()) {
      log(where(lsp), error);
      return false;
    }
  }
  if (error = kernel.resolve(run_.lsps, neighbourTimeout); !error.empty()) {
    log("", error);
    return false;
  }
  std::set<Wirx::IntfId> intfs;
  bool ipv4 = false;
  bool ipv6 = false;
  for (Lsp &lsp : run_.lsps) {
    Session::Target &target = lsp.target;
    // An RSVP-TE tunnel's sender is, unless told otherwise, this host.
    if (target.tunnelType == LspPing::LspPingTunnelType::tunnelRsvpIpv4 &&
        !target.rsvpSender && target.src.isIpv4()) {
      target.rsvpSender = target.src;
    }
    intfs.insert(target.intf);
    (target.src.isIpv6() ? ipv6 : ipv4) = true;
  }
  if (!host_.start(intfs, ipv4, ipv6, error)) {
    log("", error);
    return false;
  }
  return true;
}

bool PingRunner::labelsFromState() {
  std::vector<Lsp *> wanting;
  for (Lsp &lsp : run_.lsps) {
    if (wantsStatePath(lsp)) {
      wanting.push_back(&lsp);
    }
  }
  if (run_.stateSources.empty() || wanting.empty()) {
    return true;
  }
  const StateReading reading = readState("", run_.stateSources);
  for (const std::string &note : reading.notes) {
    log("", note);
  }
  if (!reading.document) {
    log("", reading.error);
    return false;
  }
  std::string from;
  for (const StateSource &source : run_.stateSources) {
    from += (from.empty() ? "" : " + ") + source.text();
  }
  const StatePaths paths(*reading.document);
  for (Lsp *lsp : wanting) {
    std::string error;
    const auto path = paths.path(lsp->fec, error);
    if (!path || !takeStatePath(*lsp, *path, error)) {
      log(where(*lsp), from + ": " + error);
      return false;
    }
    log(where(*lsp), lsp->fec + ": " + path->text() + ", from " + from + " (" +
                         path->entry + ")");
  }
  return true;
}

// Lines of several LSPs start with the FEC, and its line in the FEC file
// where two LSPs share a FEC.
void PingRunner::nameLsps() {
  std::map<std::string, unsigned> uses;
  for (const Lsp &lsp : run_.lsps) {
    ++uses[lsp.fec];
  }
  for (Lsp &lsp : run_.lsps) {
    lsp.name = lsp.fec;
    if (uses[lsp.fec] > 1 && lsp.line != 0) {
      lsp.name += " (line " + std::to_string(lsp.line) + ")";
    }
  }
}

// LSP i starts i / n of an interval after the first.
double PingRunner::startTime(std::size_t i) const {
  return firstStart_ + run_.ping.interval * double(i) / double(entries_.size());
}

// A few sessions at a time: starting one takes longer than a request, and
// the loop must go on reading replies while thousands start.
void PingRunner::startDue() {
  const double now = Orv::now();
  for (std::size_t batch = 0;
       batch < startBatch && started_ < entries_.size() &&
       startTime(started_) <= now;
       ++batch) {
    const std::size_t i = started_++;
    if (run_.trace) {
      startTrace(i);
    } else {
      startPing(i);
    }
  }
  if (started_ < entries_.size()) {
    starter_.timeMinIs(std::max(now, startTime(started_)));
  }
}

void PingRunner::startPing(std::size_t i) {
  const Lsp &lsp = run_.lsps[i];
  Session::PingSession::Options options = run_.ping;
  options.dst = lsp.dst;
  if (lsp.ttlsSet) {
    options.labelTtls = lsp.ttls;
  }
  const Session::IngressPath path = host_.ingressPath(lsp.target);
  report_.start(lsp, PingReport::Mode::ping, path,
                !lsp.dst ? Session::loopbackDestination(path.src) : lsp.dst, 1,
                "");
  Entry &entry = entries_[i];
  Session::PingSession::Events events;
  events.reply = [this, &lsp, &entry](const Session::Reply &reply) {
    entry.notEgress |=
        reply.code != LspPing::LspPingReturnCode::repRouterEgress;
    report_.reply(lsp, reply);
  };
  events.timeout = [this, &lsp](Orv::U32 seq) { report_.lost(lsp, seq); };
  events.done = [this, i, &lsp,
                 &entry](const Session::PingSession::Summary &summary) {
    report_.pingDone(lsp, summary, false);
    finished(i, !summary.error.empty()                      ? exitError
                : summary.received != 0 && !entry.notEgress ? exitOk
                                                            : exitNo);
  };
  entry.ping = std::make_unique<Session::PingSession>(
      host_, Orv::U32(i + 1), lsp.target, options, std::move(events));
}

void PingRunner::startTrace(std::size_t i) {
  const Lsp &lsp = run_.lsps[i];
  Session::TraceSession::Options options = run_.traceOptions;
  options.dst = lsp.dst;
  const Session::IngressPath path = host_.ingressPath(lsp.target);
  const Wirx::IpGenAddr first =
      !lsp.dst ? Session::loopbackDestination(path.src) : lsp.dst;
  report_.start(
      lsp, options.tree ? PingReport::Mode::treeTrace : PingReport::Mode::trace,
      path, first, options.tree ? options.destinations : 1,
      ", TTL limit " + std::to_string(options.maxTtl) + ", time-out " +
          secondsText(options.timeout) + " s");
  Session::TraceSession::Events events;
  if (!options.tree) {
    events.hop = [this, &lsp](const Session::Hop &hop) {
      report_.hop(lsp, hop);
    };
  }
  events.done = [this, i, &lsp](const Session::Trace &trace) {
    report_.traceDone(lsp, trace, false);
    if (run_.dot) {
      Session::writeDot(trace, *run_.dot);
    }
    finished(i, !trace.error.empty()    ? exitError
                : trace.reachedEgress() ? exitOk
                                        : exitNo);
  };
  entries_[i].trace = std::make_unique<Session::TraceSession>(
      host_, Orv::U32(i + 1), lsp.target, options, std::move(events));
}

void PingRunner::finished(std::size_t i, int status) {
  entries_[i].done = true;
  entries_[i].status = status;
  if (++finished_ == entries_.size()) {
    loop_.stop();
  }
}

// What a signal cut short is summed up as it stands; it earned no success.
void PingRunner::summariseUnfinished() {
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    Entry &entry = entries_[i];
    if (entry.done) {
      continue;
    }
    const Lsp &lsp = run_.lsps[i];
    if (run_.trace) {
      Session::Trace trace;
      trace.tree = run_.traceOptions.tree;
      report_.traceDone(lsp, entry.trace ? entry.trace->trace() : trace, true);
      entry.status = exitNo;
      continue;
    }
    const Session::PingSession::Summary summary =
        entry.ping ? entry.ping->summary() : Session::PingSession::Summary();
    report_.pingDone(lsp, summary, true);
    entry.status = summary.received != 0 && !entry.notEgress ? exitOk : exitNo;
  }
}

void PingRunner::log(const std::string &where, const std::string &line) {
  log_ << "lspping " << run_.command << ": " << where << line << "\n";
  log_.flush();
}

std::string PingRunner::where(const Lsp &lsp) const {
  return lsp.line == 0 ? ""
                       : run_.fecFile + ":" + std::to_string(lsp.line) + ": ";
}

} // namespace LspPingTool
