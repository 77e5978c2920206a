#pragma once

#include <CLI/CLI.hpp>

namespace LspPingTool {

// Adds `monitor --config FILE [--metrics ADDR:PORT] [--json]`, the daemon
// that watches LSPs and serves their metrics to Prometheus
// (MonitorDaemon). When it ends it sets `status` to the program's exit
// status.
void addMonitorCommand(CLI::App &app, int &status);

// The check of a `--metrics ADDR:PORT` option, shared with the responder.
CLI::Validator listenAddressCheck();

} // namespace LspPingTool
