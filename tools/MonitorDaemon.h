#pragma once

#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "tools/CommandLinePaths.h"
#include "tools/DaemonHooks.h"
#include "tools/LinuxSessionHost.h"
#include "tools/LspMonitor.h"
#include "tools/MetricsServer.h"
#include "tools/MonitorConfig.h"
#include "tools/StateFollower.h"
#include "tools/StateOptions.h"

namespace LspPingTool {

struct MonitorOptions {
  std::string configFile;
  // Where /metrics is served; none: not served.
  std::optional<ListenAddress> metrics;
  std::string metricsText;
  bool json = false;
  // Where LDP and segment-routing LSPs whose entries name no label take
  // their paths (a state file, FRR, the kernel), and how often the sources
  // are read again.
  StateOptions state;
  double stateRefresh = 10.0;
};

// `lspping monitor`: watches the LSPs of a configuration file from this
// Linux host, each an LspMonitor with its own client of one
// LinuxSessionHost, all on one event loop, their paths completed from the
// kernel (KernelPaths) before they start. LDP and segment-routing LSPs
// whose entries name no label take their labels, interface and next hop
// from the router's forwarding state, as its ingress does; the state's
// sources are read again every `stateRefresh` seconds, and an LSP whose
// path changed starts anew on its new path. SIGHUP reloads the file: LSPs
// whose entry did not change keep running, with their counters; those
// removed stop and leave the metrics; those added or changed start anew.
// A file with a mistake, or an LSP whose path cannot be completed, is
// refused with one line and the old set stays. SIGUSR1 logs how many are
// up; SIGINT and SIGTERM stop it.
//
// Standard error gets the log (ready, reloads, a line per state change);
// with `json`, standard output gets each state change as a JSON object.
class MonitorDaemon {
public:
  MonitorDaemon(MonitorOptions options, std::ostream &out, std::ostream &log);
  MonitorDaemon(const MonitorDaemon &) = delete;
  MonitorDaemon &operator=(const MonitorDaemon &) = delete;
  ~MonitorDaemon();

  // Sets everything up and logs the ready line; false once the one-line
  // reason it cannot is logged.
  bool start();
  // Watches until SIGINT or SIGTERM.
  void run();

private:
  // Completes the paths of `lsps` from the kernel and opens the raw
  // modules they leave by; false, with `error` naming the LSP.
  bool prepare(std::vector<MonitoredLsp *> &lsps, std::string &error);
  // Gives those of `lsps` that want one their path in `paths`; false,
  // with `error` naming the LSP, when one has none.
  bool takePaths(std::vector<MonitoredLsp *> &lsps, const StatePaths &paths,
                 std::string &error) const;
  void handleSignal(int signal);
  // Reads the state again (all of it, with the file, when `asked` by a
  // SIGHUP), then goes on in stateRead().
  void refresh(bool asked);
  void stateRead(const StateReading &reading, bool asked);
  // The configuration file read again, its new LSPs given their paths in
  // `paths` when the monitor reads a state.
  void reload(const StatePaths *paths);
  // Starts anew the LSPs whose path in `paths` is not the one they run on.
  void followPaths(const StatePaths &paths);
  bool anyFromState() const;
  // Starts `lsps`, spread over their first interval.
  void startAll(std::vector<MonitoredLsp> lsps);
  std::string metrics() const;
  void report(const MonitorEvent &event);
  void logStates();
  void log(const std::string &line);

  const MonitorOptions options_;
  std::ostream &out_;
  std::ostream &log_;
  Kiv::EventLoop loop_;
  CommandLinePaths paths_;
  LinuxSessionHost host_;
  // By name.
  std::map<std::string, std::unique_ptr<LspMonitor>> monitors_;
  Orv::U32 nextClientId_ = 1;
  DaemonHooks hooks_;
  // Set when the monitor reads a state.
  std::unique_ptr<StateFollower> follower_;
  std::unique_ptr<Kiv::Timer> refreshTimer_;
  bool askedAgain_ = false;
  // The last reading's complaint, said once.
  std::string refreshError_;
  std::vector<std::string> notes_;
};

} // namespace LspPingTool
