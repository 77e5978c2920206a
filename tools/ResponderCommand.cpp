#include "tools/ResponderCommand.h"

#include <csignal>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "tools/ExitStatus.h"
#include "tools/MonitorCommand.h"
#include "tools/ResponderDaemon.h"

namespace LspPingTool {

namespace {

struct CommandLine {
  ResponderOptions options;
  std::vector<std::string> replySources;
};

// At most one source per family; the messages name the option.
std::string readReplySources(CommandLine &c) {
  for (const std::string &text : c.replySources) {
    const auto addr = Wirx::IpGenAddr::fromString(text);
    if (!addr || !*addr) {
      return "--reply-source " + text + ": not an IPv4 or IPv6 address";
    }
    const bool twice = addr->isIpv4() ? c.options.replySource4.has_value()
                                      : c.options.replySource6.has_value();
    if (twice) {
      return "--reply-source " + text + ": a second address of its family";
    }
    if (addr->isIpv4()) {
      c.options.replySource4 = addr->v4();
    } else {
      c.options.replySource6 = addr->v6();
    }
  }
  return "";
}

int respond(CommandLine &c) {
  if (c.options.state.empty()) {
    std::cerr << "lspping responder: give --state FILE, --state-from SOURCE "
                 "or both (see --help)\n";
    return exitError;
  }
  if (const std::string error = readReplySources(c); !error.empty()) {
    std::cerr << "lspping responder: " << error << "\n";
    return exitError;
  }
  std::string error;
  if (!c.options.metricsText.empty()) {
    c.options.metrics = listenAddressOf(c.options.metricsText, error);
  }
  // Standard output closed by its reader must not end the daemon.
  std::signal(SIGPIPE, SIG_IGN);
  ResponderDaemon daemon(c.options, std::cout, std::cerr);
  if (!daemon.start()) {
    return exitError;
  }
  daemon.run();
  return exitOk;
}

} // namespace

void addResponderCommand(CLI::App &app, int &status) {
  auto c = std::make_shared<CommandLine>();
  CLI::App *cmd = app.add_subcommand(
      "responder",
      "Answer MPLS echo requests on this Linux host's interfaces, as a "
      "router does, with the library's echo responder over forwarding state "
      "read from a state file, from FRR or the kernel's label routes (read "
      "again every --state-refresh seconds), or both; interfaces, addresses "
      "and MTUs come from the kernel. Runs until SIGINT or SIGTERM (exit "
      "status 0); SIGHUP reloads the state, SIGUSR1 logs the counters. "
      "Needs root or CAP_NET_RAW.");
  addStateOptions(*cmd, c->options.state, "--state-from");
  cmd->add_option("--state-refresh", c->options.stateRefresh,
                  "seconds between two readings of the --state-from "
                  "sources")
      ->check(CLI::Range(0.1, 86400.0))
      ->capture_default_str();
  cmd->add_option("-I,--interface", c->options.interfaces,
                  "answer on this interface (repeatable); default: every "
                  "interface that is up, but the loopback, and those that "
                  "come up later");
  cmd->add_option("--rate", c->options.rate,
                  "replies per second at most, 0 for no limit")
      ->check(CLI::Validator(
          [](const std::string &text) -> std::string {
            double value = 0.0;
            if (!CLI::detail::lexical_cast(text, value) ||
                !(value >= 0.0 && value <= 1e9)) {
              return text + " is not a rate of 0 to 1e9 a second";
            }
            return "";
          },
          "PER_SECOND"))
      ->capture_default_str();
  cmd->add_option("--burst", c->options.burst,
                  "replies that may go at once, beyond the rate")
      ->check(CLI::Range(1u, 1000000u))
      ->capture_default_str();
  cmd->add_option("--reply-source", c->replySources,
                  "source address of the replies of its family, in place of "
                  "the state file's (default: the kernel's choice by route)");
  cmd->add_option("--metrics", c->options.metricsText,
                  "serve Prometheus metrics (the counters) on "
                  "http://ADDR:PORT/metrics; [ADDR]:PORT for IPv6")
      ->check(listenAddressCheck());
  cmd->add_flag("--json", c->options.json,
                "one JSON object per line on standard output: each reply "
                "and drop, and the counters (see README)");
  cmd->add_flag("-v,--verbose", c->options.verbose,
                "one line per reply and per dropped frame on standard "
                "output");
  cmd->footer("Examples:\n"
              "  lspping responder --state /etc/lspping/router.json -v\n"
              "  lspping responder --state-from frr --state-refresh 5\n"
              "  lspping responder --state router.json -I eth1 -I eth2 "
              "--rate 0 --json\n");
  cmd->callback([c, &status] { status = respond(*c); });
}

} // namespace LspPingTool
