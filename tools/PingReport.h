#pragma once

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

#include "Kiv/TimerWheel.h"
#include "Session/Hop.h"
#include "Session/IngressPath.h"
#include "Session/PingSession.h"
#include "Session/Reply.h"
#include "Session/Trace.h"
#include "tools/Lsp.h"

namespace LspPingTool {

// What `lspping ping` and `trace` print on standard output, as they go:
// lines a network engineer reads at a glance (the sessions' own text
// forms), or with --json one object per event and line, whose keys the
// README lists. With several LSPs each text line starts with its LSP's
// name. Quiet, only the
// summaries are printed. Lines are written whole; they are flushed once
// per turn of the loop, not once each.
class PingReport {
public:
  struct Style {
    bool json = false;
    bool quiet = false;
    // Whether text lines start with the LSP's name and a colon.
    bool prefixed = false;
  };

  // What a session does, for the start line.
  enum class Mode { ping, trace, treeTrace };

  PingReport(std::ostream &out, Kiv::TimerWheel &wheel, Style style);

  // A session of `lsp` starts, its requests leaving by `path` to `dst`
  // (the first of a tree trace's destinations, `destinations` of them);
  // `limits` closes the text line (", TTL limit 30, time-out 2 s").
  void start(const Lsp &lsp, Mode mode, const Session::IngressPath &path,
             const Wirx::IpGenAddr &dst, unsigned destinations,
             const std::string &limits);
  void reply(const Lsp &lsp, const Session::Reply &reply);
  void lost(const Lsp &lsp, Orv::U32 seq);
  void pingDone(const Lsp &lsp, const Session::PingSession::Summary &summary,
                bool interrupted);
  void hop(const Lsp &lsp, const Session::Hop &hop);
  void traceDone(const Lsp &lsp, const Session::Trace &trace, bool interrupted);

private:
  // Writes `text`, each of its lines prefixed.
  void text(const Lsp &lsp, const std::string &text);
  // Writes one JSON object, its `event`, `fec` and (from a FEC file)
  // `line` first.
  void json(const Lsp &lsp, const char *event, nlohmann::ordered_json body);
  void flushSoon();

  std::ostream &out_;
  const Style style_;
  Kiv::Timer flush_;
};

} // namespace LspPingTool
