#include "tools/MonitorDaemon.h"

#include <algorithm>
#include <csignal>
#include <functional>
#include <set>
#include <utility>

#include "Orv/Clock.h"
#include "tools/KernelPaths.h"
#include "tools/RawSockets.h"

namespace LspPingTool {

namespace {

// How long the kernel is given to find a next hop's MAC address.
constexpr double neighbourTimeout = 3.0;

} // namespace

MonitorDaemon::MonitorDaemon(MonitorOptions options, std::ostream &out,
                             std::ostream &log)
    : options_(std::move(options)), out_(out), log_(log),
      host_(loop_, paths_,
            [this](const std::string &line) { this->log(line); }) {}

// The monitors go before the host whose client side they configure, the
// server and signals before the loop.
MonitorDaemon::~MonitorDaemon() {
  follower_.reset();
  refreshTimer_.reset();
  hooks_.close();
  monitors_.clear();
}

bool MonitorDaemon::start() {
  std::string error;
  auto lsps = loadMonitorConfig(options_.configFile, error);
  if (!lsps) {
    log(error);
    return false;
  }
  if (const std::string refused = rawSocketsRefused(); !refused.empty()) {
    log(refused);
    return false;
  }
  if (!host_.open(error) || !host_.start({}, true, true, error)) {
    log(error);
    return false;
  }
  std::vector<MonitoredLsp *> all;
  for (MonitoredLsp &lsp : *lsps) {
    all.push_back(&lsp);
  }
  const StateOptions &state = options_.state;
  if (!state.empty()) {
    follower_ = std::make_unique<StateFollower>(loop_, state);
    const StateReading reading = readState(state.file, state.sources);
    for (const std::string &note : reading.notes) {
      log(note);
    }
    notes_ = reading.notes;
    if (!reading.document) {
      log(reading.error);
      return false;
    }
    follower_->lastIs(*reading.document);
    if (!takePaths(all, StatePaths(*reading.document), error)) {
      log(error);
      return false;
    }
  }
  if (!prepare(all, error)) {
    log(error);
    return false;
  }
  if (!hooks_.open(
          loop_, options_.metrics, options_.metricsText,
          [this] { return metrics(); },
          [this](const std::string &line) { log(line); },
          [this](int signal) { handleSignal(signal); }, error)) {
    log(error);
    return false;
  }
  if (!state.sources.empty()) {
    refreshTimer_ =
        std::make_unique<Kiv::Timer>(loop_.wheel(), [this] { refresh(false); });
    refreshTimer_->timeMinIs(Orv::now() + options_.stateRefresh);
  }
  const std::size_t count = lsps->size();
  startAll(std::move(*lsps));
  log("watching " + std::to_string(count) + (count == 1 ? " LSP" : " LSPs") +
      (hooks_.servesMetrics() ? ", metrics on " + options_.metricsText : ""));
  return true;
}

void MonitorDaemon::run() { loop_.run(); }

bool MonitorDaemon::prepare(std::vector<MonitoredLsp *> &lsps,
                            std::string &error) {
  if (lsps.empty()) {
    return true;
  }
  const auto routes = KernelRoutes::open(error);
  if (!routes) {
    return false;
  }
  const KernelPaths kernel(*routes, host_.intfs(), host_.ipv4(), host_.ipv6());
  std::vector<Lsp> paths;
  for (MonitoredLsp *lsp : lsps) {
    if (error = kernel.route(lsp->lsp); !error.empty()) {
      error = options_.configFile + ": lsp " + lsp->name + ": " + error;
      return false;
    }
    paths.push_back(lsp->lsp);
  }
  if (error = kernel.resolve(paths, neighbourTimeout); !error.empty()) {
    error = options_.configFile + ": " + error;
    return false;
  }
  std::set<Wirx::IntfId> intfs;
  for (std::size_t i = 0; i < lsps.size(); ++i) {
    Session::Target &target = lsps[i]->lsp.target;
    target = paths[i].target;
    // An RSVP-TE tunnel's sender is, unless told otherwise, this host.
    if (target.tunnelType == LspPing::LspPingTunnelType::tunnelRsvpIpv4 &&
        !target.rsvpSender && target.src.isIpv4()) {
      target.rsvpSender = target.src;
    }
    intfs.insert(target.intf);
  }
  return host_.txIntfsAdd(intfs, error);
}

bool MonitorDaemon::takePaths(std::vector<MonitoredLsp *> &lsps,
                              const StatePaths &paths,
                              std::string &error) const {
  for (MonitoredLsp *lsp : lsps) {
    if (!wantsStatePath(lsp->lsp)) {
      continue;
    }
    Lsp asRead = lsp->lsp;
    const auto path = paths.path(asRead.fec, error);
    if (!path || !takeStatePath(lsp->lsp, *path, error)) {
      error = options_.configFile + ": lsp " + lsp->name + ": " +
              follower_->name() + ": " + error;
      return false;
    }
    lsp->fromState = std::make_shared<const MonitoredLsp::FromState>(
        MonitoredLsp::FromState{std::move(asRead), *path});
  }
  return true;
}

void MonitorDaemon::handleSignal(int signal) {
  switch (signal) {
  case SIGHUP:
    if (follower_) {
      refresh(true);
    } else {
      reload(nullptr);
    }
    break;
  case SIGUSR1:
    logStates();
    break;
  default:
    loop_.stop();
    break;
  }
}

void MonitorDaemon::refresh(bool asked) {
  if (refreshTimer_) {
    refreshTimer_->timeMinIs(Orv::now() + options_.stateRefresh);
  }
  // Nothing to read for LSPs that all have their labels.
  if (!asked && !anyFromState()) {
    return;
  }
  const bool started =
      follower_->read(asked, [this, asked](StateReading reading) {
        stateRead(reading, asked);
      });
  // A SIGHUP asks for what the sources and the file say after it: the
  // reading under way may have read them before.
  askedAgain_ = askedAgain_ || (asked && !started);
}

void MonitorDaemon::stateRead(const StateReading &reading, bool asked) {
  if (reading.notes != notes_) {
    for (const std::string &note : reading.notes) {
      log(note);
    }
    notes_ = reading.notes;
  }
  if (!reading.document) {
    if (asked) {
      log("reload refused, the old set stays: " + reading.error);
    } else if (reading.error != refreshError_) {
      log("state refresh failed, the LSPs keep their paths: " + reading.error);
    }
    refreshError_ = reading.error;
  } else {
    if (!refreshError_.empty() && !asked) {
      log("state refresh works again");
    }
    refreshError_.clear();
    if (reading.document) {
      const StatePaths paths(*reading.document);
      if (asked) {
        reload(&paths);
      } else {
        followPaths(paths);
      }
    }
  }
  if (std::exchange(askedAgain_, false)) {
    refresh(true);
  }
}

// Diffs by name: an entry that did not change keeps its monitor, and its
// path unless the state changed it.
void MonitorDaemon::reload(const StatePaths *paths) {
  std::string error;
  auto lsps = loadMonitorConfig(options_.configFile, error);
  std::vector<MonitoredLsp> fresh;
  std::set<std::string> kept;
  if (lsps) {
    for (MonitoredLsp &lsp : *lsps) {
      const auto it = monitors_.find(lsp.name);
      if (it != monitors_.end() &&
          it->second->lsp().definitionHash == lsp.definitionHash) {
        kept.insert(lsp.name);
      } else {
        fresh.push_back(std::move(lsp));
      }
    }
    std::vector<MonitoredLsp *> toPrepare;
    for (MonitoredLsp &lsp : fresh) {
      toPrepare.push_back(&lsp);
    }
    if (!paths || takePaths(toPrepare, *paths, error)) {
      prepare(toPrepare, error);
    }
  }
  if (!error.empty()) {
    log("reload refused, the old set stays: " + error);
    return;
  }
  std::size_t removed = 0, changed = 0;
  for (auto it = monitors_.begin(); it != monitors_.end();) {
    if (kept.contains(it->first)) {
      ++it;
      continue;
    }
    const bool again =
        std::any_of(fresh.begin(), fresh.end(),
                    [&](const MonitoredLsp &l) { return l.name == it->first; });
    ++(again ? changed : removed);
    it = monitors_.erase(it);
  }
  const std::size_t added = fresh.size() - changed;
  startAll(std::move(fresh));
  log("reloaded " + options_.configFile + ": " +
      std::to_string(monitors_.size()) + " LSPs (" + std::to_string(added) +
      " added, " + std::to_string(removed) + " removed, " +
      std::to_string(changed) + " changed)");
  if (paths) {
    followPaths(*paths);
  }
}

void MonitorDaemon::followPaths(const StatePaths &paths) {
  std::vector<MonitoredLsp> moved;
  for (const auto &[name, monitor] : monitors_) {
    const auto &from = monitor->lsp().fromState;
    if (!from) {
      continue;
    }
    std::string error;
    const auto path = paths.path(from->asRead.fec, error);
    if (!path) {
      log("lsp " + name + ": " + follower_->name() + ": " + error +
          "; it stays on " + from->path.text());
      continue;
    }
    if (*path == from->path) {
      continue;
    }
    MonitoredLsp lsp = monitor->lsp();
    lsp.lsp = from->asRead;
    if (!takeStatePath(lsp.lsp, *path, error)) {
      log("lsp " + name + ": " + follower_->name() + ": " + error +
          "; it stays on " + from->path.text());
      continue;
    }
    lsp.fromState = std::make_shared<const MonitoredLsp::FromState>(
        MonitoredLsp::FromState{from->asRead, *path});
    moved.push_back(std::move(lsp));
  }
  std::vector<MonitoredLsp *> toPrepare;
  for (MonitoredLsp &lsp : moved) {
    toPrepare.push_back(&lsp);
  }
  if (std::string error; !prepare(toPrepare, error)) {
    log("new paths from " + follower_->name() +
        " not taken, the LSPs stay on theirs: " + error);
    return;
  }
  for (const MonitoredLsp &lsp : moved) {
    log("lsp " + lsp.name + ": its path changed in " + follower_->name() +
        " (was " + monitors_.at(lsp.name)->lsp().fromState->path.text() +
        "): started anew");
    monitors_.erase(lsp.name);
  }
  startAll(std::move(moved));
}

bool MonitorDaemon::anyFromState() const {
  return std::any_of(monitors_.begin(), monitors_.end(), [](const auto &item) {
    return item.second->lsp().fromState != nullptr;
  });
}

void MonitorDaemon::startAll(std::vector<MonitoredLsp> lsps) {
  const double now = Orv::now();
  const double n = double(lsps.size());
  for (std::size_t i = 0; i < lsps.size(); ++i) {
    const double start = now + lsps[i].interval * double(i) / n;
    std::string name = lsps[i].name;
    if (const auto &from = lsps[i].fromState) {
      log("lsp " + name + ": " + from->path.text() + ", from " +
          follower_->name() + " (" + from->path.entry + ")");
    }
    monitors_[name] = std::make_unique<LspMonitor>(
        host_, nextClientId_++, std::move(lsps[i]), start,
        [this](const MonitorEvent &event) { report(event); });
  }
}

std::string MonitorDaemon::metrics() const {
  std::vector<const LspMonitor *> monitors;
  monitors.reserve(monitors_.size());
  for (const auto &[name, monitor] : monitors_) {
    monitors.push_back(monitor.get());
  }
  MetricsText text;
  text.reserve(2048 * monitors.size() + 4096);
  LspMonitor::writeMetrics(text, monitors);
  return text.take();
}

void MonitorDaemon::report(const MonitorEvent &event) {
  log(event.text());
  if (options_.json) {
    out_ << event.json().dump(-1, ' ', false,
                              nlohmann::ordered_json::error_handler_t::replace)
         << "\n";
    out_.flush();
  }
}

void MonitorDaemon::logStates() {
  std::size_t up = 0, down = 0;
  for (const auto &[name, monitor] : monitors_) {
    if (const auto state = monitor->up()) {
      ++(*state ? up : down);
    }
  }
  log("watching " + std::to_string(monitors_.size()) + " LSPs: " +
      std::to_string(up) + " up, " + std::to_string(down) + " down, " +
      std::to_string(monitors_.size() - up - down) + " not yet judged");
}

void MonitorDaemon::log(const std::string &line) {
  log_ << "lspping monitor: " << line << "\n";
  log_.flush();
}

} // namespace LspPingTool
