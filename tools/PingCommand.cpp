#include "tools/PingCommand.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "tools/ExitStatus.h"
#include "tools/Lsp.h"
#include "tools/PingRunner.h"
#include "tools/StateOptions.h"

namespace LspPingTool {

namespace {

struct CommandLine {
  bool trace = false;
  LspWords words;
  std::string fecFile;
  std::string dotFile;
  PingRun run;
};

// A number of seconds, more than none.
CLI::Validator seconds() {
  return CLI::Validator(
      [](const std::string &text) -> std::string {
        double value = 0;
        if (!CLI::detail::lexical_cast(text, value) ||
            !(value > 0 && value <= 86400)) {
          return text + " is not a number of seconds above 0";
        }
        return "";
      },
      "");
}

// What the command line says beyond each option's own value.
std::string mistake(const CommandLine &c) {
  const LspWords &w = c.words;
  if (!c.fecFile.empty()) {
    if (!w.fec.empty()) {
      return "--fec-file " + c.fecFile +
             ": the FECs come from the file, not the command line";
    }
    if (!w.labels.empty() || w.lspId || w.extTunnelId || w.sender || w.igp ||
        w.pwType) {
      return "--fec-file " + c.fecFile +
             ": labels and a FEC's own options go on the file's lines";
    }
  }
  if (!c.dotFile.empty() && c.run.lsps.size() > 1) {
    return "--dot " + c.dotFile + ": the graph of one LSP only";
  }
  if (c.trace) {
    for (const Lsp &lsp : c.run.lsps) {
      if (lsp.ttlsSet) {
        return (lsp.line ? c.fecFile + ":" + std::to_string(lsp.line) + ": "
                         : std::string()) +
               "--label: a trace sets the labels' TTL itself, hop by hop";
      }
    }
  }
  return "";
}

int runCommand(CommandLine &c) {
  const std::string program = c.trace ? "trace" : "ping";
  const auto fail = [&program](const std::string &why) {
    std::cerr << "lspping " << program << ": " << why << "\n";
    return exitError;
  };
  std::string error;
  if (c.fecFile.empty() || !c.words.fec.empty()) {
    if (auto lsp = c.fecFile.empty() ? lspOf(c.words, error) : std::nullopt) {
      c.run.lsps.push_back(std::move(*lsp));
    }
  } else if (auto lsps = readFecFile(c.fecFile, c.words, error)) {
    c.run.lsps = std::move(*lsps);
  }
  if (error.empty()) {
    error = mistake(c);
  }
  if (!error.empty()) {
    return fail(error);
  }
  c.run.command = program;
  c.run.style.prefixed = c.run.lsps.size() > 1;
  c.run.trace = c.trace;
  c.run.fecFile = c.fecFile;
  std::ofstream dotFile;
  std::ostream discard(nullptr);
  std::ostream *out = &std::cout;
  if (c.dotFile == "-") {
    c.run.dot = &std::cout;
    out = &discard;
  } else if (!c.dotFile.empty()) {
    dotFile.open(c.dotFile);
    if (!dotFile) {
      return fail(c.dotFile + ": " + std::strerror(errno));
    }
    c.run.dot = &dotFile;
  }
  PingRunner runner(std::move(c.run), *out, std::cerr);
  return runner.run();
}

void addShared(CLI::App &cmd, CommandLine &c) {
  addLspOptions(cmd, c.words);
  cmd.add_option("-W", c.run.ping.timeout,
                 "seconds to wait for a reply to each request")
      ->check(seconds())
      ->type_name("SECONDS")
      ->capture_default_str();
  cmd.add_option("--fec-file", c.fecFile,
                 "many LSPs at once: a line per LSP, its FEC and its "
                 "options as on the command line (--label, -I, --nexthop, "
                 "--nexthop-mac, -s, --destination, --tc and the FEC's own); "
                 "# starts a comment. -I, --nexthop, --nexthop-mac, -s, "
                 "--destination and --tc on the command line apply to "
                 "lines without them")
      ->type_name("FILE");
  cmd.add_option_function<std::string>(
         "--state-from",
         [&c](const std::string &text) {
           c.run.stateSources.push_back(*StateSource::fromString(text));
         },
         "LDP and segment-routing LSPs given no --label take their labels, "
         "interface and next hop from SOURCE, as the router's ingress does: "
         "frr (vtysh), frr:NAME (vtysh -N NAME) or kernel; the one used is "
         "said on standard error")
      ->type_name("SOURCE")
      ->check(stateSourceCheck());
  cmd.add_flag("-q,--quiet", c.run.style.quiet, "print the summaries only");
  cmd.add_flag("--json", c.run.style.json,
               "one JSON object per line: each event, then the summary "
               "(see README)");
}

} // namespace

void addPingCommands(CLI::App &app, int &status) {
  auto ping = std::make_shared<CommandLine>();
  CLI::App *cmd = app.add_subcommand(
      "ping",
      "Ping an LSP from this Linux host: MPLS echo requests built by the "
      "library's ping client, sent with the LSP's labels out of an "
      "interface to its next hop, one a second; a line per reply (return "
      "code by name and number, round trip) and per request left "
      "unanswered, then a summary, also on Ctrl-C. Needs root or "
      "CAP_NET_RAW. Exit status 0 when replies came and every one was the "
      "egress's, 1 when not, 2 for a usage or system error.");
  addShared(*cmd, *ping);
  cmd->add_option("-c", ping->run.ping.count,
                  "requests to send per LSP; 0: until interrupted")
      ->type_name("COUNT")
      ->capture_default_str();
  cmd->add_option("-i", ping->run.ping.interval, "seconds between requests")
      ->check(seconds())
      ->type_name("SECONDS")
      ->capture_default_str();
  cmd->footer("FEC: ldp PREFIX | rsvp END_POINT TUNNEL_ID [--lsp-id N] "
              "[--ext-tunnel-id A] [--sender A] | sr PREFIX [--igp isis] | "
              "nil | static PREFIX | pw SENDER RECEIVER PW_ID [--pw-type N]\n"
              "Examples:\n"
              "  lspping ping ldp 10.255.0.4/32 --label 1004\n"
              "  lspping ping -I e1 --nexthop 10.0.12.2 sr 2001:db8:ff::4/128 "
              "--label 16104 -c 3\n"
              "  lspping ping --fec-file lsps.txt -q --json\n"
              "  lspping ping ldp 10.0.0.3/32 --state-from frr\n");
  cmd->callback([ping, &status] { status = runCommand(*ping); });

  auto trace = std::make_shared<CommandLine>();
  trace->trace = true;
  cmd = app.add_subcommand(
      "trace",
      "Trace an LSP from this Linux host hop by hop: requests with TTL 1, 2, "
      "... each carrying the downstream mapping the hop before answered "
      "with; a line per hop, then how the trace ended. --multipath follows "
      "every branch of an ECMP split. Needs root or CAP_NET_RAW. Exit "
      "status 0 when the egress was reached (with --multipath, by every "
      "path), 1 when not, 2 for a usage or system error.");
  addShared(*cmd, *trace);
  cmd->add_option("-m,--max-ttl", trace->run.traceOptions.maxTtl,
                  "the TTL of the last hop asked")
      ->check(CLI::Range(1, 255))
      ->type_name("N")
      ->capture_default_str();
  cmd->add_flag("--multipath", trace->run.traceOptions.tree,
                "the tree trace: every branch, each with its own IP "
                "destinations (127.0.0.1 and up)");
  cmd->add_option("--dot", trace->dotFile,
                  "also write the trace as a Graphviz graph to FILE, for "
                  "`dot -Tsvg`; - writes it to standard output instead of the "
                  "report")
      ->type_name("FILE");
  cmd->footer("FEC: ldp PREFIX | rsvp END_POINT TUNNEL_ID [--lsp-id N] "
              "[--ext-tunnel-id A] [--sender A] | sr PREFIX [--igp isis] | "
              "nil | static PREFIX | pw SENDER RECEIVER PW_ID [--pw-type N]\n"
              "Examples:\n"
              "  lspping trace ldp 10.255.0.4/32 --label 1004\n"
              "  lspping trace --multipath --dot tree.dot ldp 10.255.0.4/32 "
              "--label 1004\n"
              "  lspping trace ldp 10.0.0.3/32 --state-from frr:r1\n");
  cmd->callback([trace, &status] {
    trace->run.traceOptions.timeout = trace->run.ping.timeout;
    status = runCommand(*trace);
  });
}

} // namespace LspPingTool
