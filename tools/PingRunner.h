#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "Session/PingSession.h"
#include "Session/TraceSession.h"
#include "tools/CommandLinePaths.h"
#include "tools/LinuxSessionHost.h"
#include "tools/Lsp.h"
#include "tools/PingReport.h"
#include "tools/SignalFd.h"
#include "tools/StateSource.h"

namespace LspPingTool {

// What `lspping ping` or `trace` is to do.
struct PingRun {
  // The subcommand, "ping" or "trace": what error lines start with.
  std::string command = "ping";
  bool trace = false;
  std::vector<Lsp> lsps;
  // Where the LSPs come from when not from the command line.
  std::string fecFile;
  Session::PingSession::Options ping;
  Session::TraceSession::Options traceOptions;
  PingReport::Style style;
  // Where a trace's Graphviz graph goes; none when null.
  std::ostream *dot = nullptr;
  // Where the labels of LDP and segment-routing LSPs given none come from,
  // with their interface and next hop; none: plain IP by the kernel's route.
  std::vector<StateSource> stateSources;
};

// Runs `lspping ping` or `trace` on this Linux host: every LSP's session on
// one LinuxSessionHost, one event loop, the LSPs' first requests spread
// over the first interval so that many LSPs do not send in one burst.
// Before the first request it completes each LSP's path from the state
// sources when asked to (labels, interface, next hop), then from the kernel
// (KernelPaths), and refuses, with one line, what cannot be sent. SIGINT
// and SIGTERM end it with the summaries so far.
class PingRunner {
public:
  PingRunner(PingRun run, std::ostream &out, std::ostream &log);
  PingRunner(const PingRunner &) = delete;
  PingRunner &operator=(const PingRunner &) = delete;
  ~PingRunner();

  // Runs every session to its end, or until a signal; the exit status: 0
  // when every LSP earned it (a ping: replies came, every one from the
  // egress; a trace: every path reached the egress), 1 when one did not, 2
  // when the run could not be set up or a session could not send.
  int run();

private:
  struct Entry {
    std::unique_ptr<Session::PingSession> ping;
    std::unique_ptr<Session::TraceSession> trace;
    bool done = false;
    // A reply that was not the egress's came.
    bool notEgress = false;
    int status = 0;
  };

  // Completes the LSPs' paths and starts the host; false once the reason
  // it cannot is logged.
  bool prepare();
  // Gives the LSPs without labels those the state sources say; false once
  // the reason it cannot is logged.
  bool labelsFromState();
  void nameLsps();
  void startDue();
  void startPing(std::size_t i);
  void startTrace(std::size_t i);
  void finished(std::size_t i, int status);
  // Prints the summaries of the sessions a signal cut short, or kept from
  // starting, as they stand.
  void summariseUnfinished();
  double startTime(std::size_t i) const;
  void log(const std::string &where, const std::string &line);
  std::string where(const Lsp &lsp) const;

  PingRun run_;
  std::ostream &out_;
  std::ostream &log_;
  Kiv::EventLoop loop_;
  CommandLinePaths paths_;
  LinuxSessionHost host_;
  PingReport report_;
  std::vector<Entry> entries_;
  std::size_t started_ = 0;
  std::size_t finished_ = 0;
  double firstStart_ = 0;
  Kiv::Timer starter_;
  std::unique_ptr<SignalFd> signals_;
};

} // namespace LspPingTool
