#include "tools/DaemonHooks.h"

#include <csignal>
#include <system_error>
#include <utility>

namespace LspPingTool {

bool DaemonHooks::open(Kiv::EventLoop &loop,
                       const std::optional<ListenAddress> &at,
                       const std::string &metricsText,
                       MetricsServer::Metrics metrics, MetricsServer::Log log,
                       std::function<void(int)> onSignal, std::string &error) {
  if (at) {
    server_ = MetricsServer::open(loop, *at, std::move(metrics), std::move(log),
                                  error);
    if (!server_) {
      error += " (" + metricsText + ")";
      return false;
    }
  }
  try {
    signals_ = std::make_unique<SignalFd>(
        loop, std::initializer_list<int>{SIGHUP, SIGUSR1, SIGINT, SIGTERM},
        std::move(onSignal));
  } catch (const std::system_error &e) {
    error = std::string("cannot take signals: ") + e.what();
    return false;
  }
  return true;
}

void DaemonHooks::close() {
  signals_.reset();
  server_.reset();
}

} // namespace LspPingTool
