#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Kiv/TimerWheel.h"
#include "Session/Host.h"
#include "Session/PingSession.h"
#include "Session/TraceSession.h"
#include "tools/MetricsText.h"
#include "tools/MonitorConfig.h"
#include "tools/MonitorEvent.h"

namespace LspPingTool {

// One LSP that `lspping monitor` watches, for as long as it lives: a ping
// without end on its own client (or a trace every interval), its probes
// judged window by window, its counters kept for the metrics. A window is
// `window` probes, a probe one request (ping) or one whole trace; it
// passes when at most `lossThreshold` percent of its probes failed and
// every reply that came was the egress's (a trace: the egress was
// reached). The LSP is up while its last window passed, down while it did
// not, unknown until its first window is over; each change, and each
// change of a traced path, is an event.
class LspMonitor {
public:
  using EventSink = std::function<void(const MonitorEvent &)>;

  // Upper bounds, in seconds, of the round-trip histogram's buckets.
  static constexpr std::array<double, 12> rttBounds = {
      0.0005, 0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1, 2.5};

  // Starts probing at `start` with client `clientId` of `host`, unique
  // among the host's clients. `host` must outlive this.
  LspMonitor(const Session::Host &host, Orv::U32 clientId, MonitoredLsp lsp,
             double start, EventSink events);
  LspMonitor(const LspMonitor &) = delete;
  LspMonitor &operator=(const LspMonitor &) = delete;
  ~LspMonitor();

  const MonitoredLsp &lsp() const { return lsp_; }
  // Whether the last window passed; unset before the first is over.
  std::optional<bool> up() const { return up_; }

  // The metrics of `monitors`, family by family (see README).
  static void writeMetrics(MetricsText &text,
                           const std::vector<const LspMonitor *> &monitors);

private:
  void handleStart();
  void startPing();
  void startTrace();
  void handlePingReply(const Session::Reply &reply);
  void handleTraceDone(const Session::Trace &trace);
  void replyCounted(const Session::Reply &reply);
  void rttObserved(Orv::U32 micros);
  // One probe's outcome; `bad` says why it failed (with a return code: the
  // wrong one; without: lost), unset when it passed.
  void probed(std::optional<MonitorEvent> bad);
  void pathIs(std::vector<PathHop> path);
  Orv::U64 requests() const;

  const Session::Host &host_;
  const Orv::U32 clientId_;
  const MonitoredLsp lsp_;
  EventSink events_;
  Kiv::Timer starter_;
  double firstStart_ = 0;
  std::unique_ptr<Session::PingSession> ping_;
  std::unique_ptr<Session::TraceSession> trace_;
  // Requests of the sessions that ended.
  Orv::U64 requestsBefore_ = 0;

  // Replies by return code, by code: one or two codes in a vector weigh
  // less than the nodes of a map.
  std::vector<std::pair<Orv::U8, Orv::U64>> replies_;
  std::array<Orv::U64, rttBounds.size() + 1> rttCounts_{};
  double rttSum_ = 0;
  std::optional<Orv::U8> lastCode_;
  Orv::U8 lastSubcode_ = 0;

  // The window so far: probes, those lost (no reply, or a trace that ended
  // in silence) and those answered with a code not the egress's.
  Orv::U32 probes_ = 0;
  Orv::U32 lost_ = 0;
  Orv::U32 wrong_ = 0;
  // The last failure of the window, what a down event tells; on the heap,
  // as it is rare and an event is large.
  std::unique_ptr<MonitorEvent> lastBad_;
  std::optional<bool> up_;

  std::optional<std::vector<PathHop>> path_;
  Orv::U64 pathChanges_ = 0;
};

} // namespace LspPingTool
