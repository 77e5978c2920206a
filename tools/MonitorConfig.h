#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Orv/Types.h"
#include "tools/Lsp.h"
#include "tools/StatePaths.h"

namespace LspPingTool {

// One LSP that `lspping monitor` watches, as its configuration file names
// it (see README, "Monitoring LSPs with Prometheus").
struct MonitoredLsp {
  std::string name;
  Lsp lsp;
  // Trace the path, rather than ping the egress.
  bool trace = false;
  // Seconds between two requests (ping) or the starts of two traces.
  double interval = 1;
  // Seconds to wait for each reply.
  double timeout = 2;
  // Probes (requests, or whole traces) judged together: the LSP is up when
  // at most `lossThreshold` percent of the last window failed and every
  // reply that came was the egress's.
  Orv::U32 window = 5;
  double lossThreshold = 20;
  Orv::U8 maxTtl = 30;
  // A hash of the entry with the defaults applied: a reload keeps the LSP
  // of a name running while its definition stays the same, and two entries
  // with equal hashes are the same entry. The text itself is not kept:
  // each LSP would hold a hundred bytes or more for this comparison alone.
  std::size_t definitionHash = 0;

  // An LSP whose path the forwarding state gives (an LDP or
  // segment-routing FEC whose entry names no label): the LSP as its entry
  // reads, before it took a path, and the path it took. Shared: it does
  // not change while the LSP runs.
  struct FromState {
    Lsp asRead;
    StatePath path;
  };
  std::shared_ptr<const FromState> fromState;
};

// Reads the configuration file at `path`: a JSON object, strict (unknown
// keys refused). Empty, with a one-line `error` naming the file, the place
// in it (a JSON pointer, or line:column for a syntax error) and the
// mistake, when it is not right.
std::optional<std::vector<MonitoredLsp>>
loadMonitorConfig(const std::string &path, std::string &error);

// The same from the file's text.
std::optional<std::vector<MonitoredLsp>>
monitorConfigOf(std::string_view text, const std::string &fileName,
                std::string &error);

} // namespace LspPingTool
