#include "tools/MonitorCommand.h"

#include <csignal>
#include <iostream>
#include <memory>

#include "tools/ExitStatus.h"
#include "tools/MonitorDaemon.h"
#include "tools/StateOptions.h"

namespace LspPingTool {

CLI::Validator listenAddressCheck() {
  return CLI::Validator(
      [](const std::string &text) -> std::string {
        std::string error;
        return listenAddressOf(text, error) ? "" : error;
      },
      "ADDR:PORT");
}

void addMonitorCommand(CLI::App &app, int &status) {
  auto options = std::make_shared<MonitorOptions>();
  CLI::App *cmd = app.add_subcommand(
      "monitor",
      "Watch LSPs around the clock from this Linux host: each LSP of the "
      "configuration file pinged (or traced) every interval through the "
      "library's ping client, judged up or down window by window; a line "
      "per state change, and metrics for Prometheus on /metrics. Runs until "
      "SIGINT or SIGTERM (exit status 0); SIGHUP reloads the file, SIGUSR1 "
      "logs how many LSPs are up. LDP and segment-routing LSPs given no "
      "label take their path from the router's state (--state, "
      "--state-from) and follow it when it changes. Needs root or "
      "CAP_NET_RAW.");
  cmd->add_option("--config", options->configFile,
                  "the LSPs to watch, a JSON file (see README)")
      ->required()
      ->type_name("FILE");
  addStateOptions(*cmd, options->state, "--state-from");
  cmd->add_option("--state-refresh", options->stateRefresh,
                  "seconds between two readings of the --state-from "
                  "sources")
      ->check(CLI::Range(0.1, 86400.0))
      ->capture_default_str();
  cmd->add_option("--metrics", options->metricsText,
                  "serve Prometheus metrics on http://ADDR:PORT/metrics; "
                  "[ADDR]:PORT for IPv6")
      ->check(listenAddressCheck());
  cmd->add_flag("--json", options->json,
                "each state change also as a JSON object on standard "
                "output (see README)");
  cmd->footer("Examples:\n"
              "  lspping monitor --config /etc/lspping/monitor.json "
              "--metrics 127.0.0.1:9101\n"
              "  lspping monitor --config monitor.json --json\n"
              "  lspping monitor --config monitor.json --state-from frr\n");
  cmd->callback([options, &status] {
    std::string error;
    if (!options->metricsText.empty()) {
      options->metrics = listenAddressOf(options->metricsText, error);
    }
    // Standard output closed by its reader must not end the daemon.
    std::signal(SIGPIPE, SIG_IGN);
    MonitorDaemon daemon(*options, std::cout, std::cerr);
    if (!daemon.start()) {
      status = exitError;
      return;
    }
    daemon.run();
    status = exitOk;
  });
}

} // namespace LspPingTool
