#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Kiv/EventLoop.h"
#include "tools/MetricsServer.h"
#include "tools/SignalFd.h"

namespace LspPingTool {

// What a daemon of this program takes from outside besides its traffic,
// on its event loop: its signals (SIGHUP, SIGUSR1, SIGINT, SIGTERM), and
// its metrics served for Prometheus when an address is given.
class DaemonHooks {
public:
  // Opens both; false, with a one-line `error` (naming the metrics'
  // address `metricsText`), when it cannot.
  bool open(Kiv::EventLoop &loop, const std::optional<ListenAddress> &at,
            const std::string &metricsText, MetricsServer::Metrics metrics,
            MetricsServer::Log log, std::function<void(int)> onSignal,
            std::string &error);
  bool servesMetrics() const { return server_ != nullptr; }
  // Closes both, before the loop they are registered with goes.
  void close();

private:
  std::unique_ptr<MetricsServer> server_;
  std::unique_ptr<SignalFd> signals_;
};

} // namespace LspPingTool
