#pragma once

#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "tools/CommandLinePaths.h"
#include "tools/LinuxSessionHost.h"
#include "tools/LspMonitor.h"
#include "tools/MetricsServer.h"
#include "tools/MonitorConfig.h"
#include "tools/SignalFd.h"

namespace LspPingTool {

struct MonitorOptions {
  std::string configFile;
  // Where /metrics is served; none: not served.
  std::optional<ListenAddress> metrics;
  std::string metricsText;
  bool json = false;
};

// `lspping monitor`: watches the LSPs of a configuration file from this
// Linux host, each an LspMonitor with its own client of one
// LinuxSessionHost, all on one event loop, their paths completed from the
// kernel (KernelPaths) before they start. SIGHUP reloads the file: LSPs
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
  void handleSignal(int signal);
  void reload();
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
  std::unique_ptr<MetricsServer> server_;
  std::unique_ptr<SignalFd> signals_;
};

} // namespace LspPingTool
