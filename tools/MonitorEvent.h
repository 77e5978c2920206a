#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

#include "Orv/Types.h"

namespace LspPingTool {

// One hop of a traced path as the monitor compares paths: the router that
// answered (empty when none did) and the labels of the mapping the path
// goes on by.
struct PathHop {
  std::string from;
  std::vector<Orv::U32> labels;

  bool operator==(const PathHop &) const = default;
  // "10.0.0.2 [1004 2004]", "*" for a hop that did not answer.
  std::string text() const;
};

// A state change of a watched LSP, as `lspping monitor` logs it: down, up,
// or its traced path changed.
struct MonitorEvent {
  enum class Kind { down, up, pathChanged };

  Kind kind = Kind::down;
  std::string lsp;
  // The FEC as `lspping craft --fec` writes it.
  std::string fec;
  bool trace = false;
  // The state before: "up", "down", or empty for the first judgement.
  std::string was;
  // The window judged: probes, those that failed (lost, or not the
  // egress's).
  Orv::U32 probes = 0;
  Orv::U32 failed = 0;
  // Why it is down, in words: "labelMappingMismatch (code 10, subcode 1)
  // from 10.255.0.2 at hop 1", "4 of 5 requests lost".
  std::string reason;
  // The code that is not the egress's, and who said it, when one came.
  std::optional<Orv::U8> returnCode;
  Orv::U8 returnSubcode = 0;
  std::string from;
  // A trace's hop (its TTL) where it ended or where the path changed; 0
  // when none.
  Orv::U32 hop = 0;
  // A path change: the hop before and after (empty: the path was shorter).
  std::optional<PathHop> before;
  std::optional<PathHop> after;
  std::vector<PathHop> path;

  // "lsp pe2-ldp down: labelMappingMismatch (code 10, subcode 1) from
  // 10.255.0.2 at hop 1 (5 of 5 probes failed)", "lsp pe2-ldp up (0 of 5
  // probes failed)", "lsp pe2-trace path changed at hop 2: 10.255.0.3 [3]
  // -> 10.255.0.5 [3]".
  std::string text() const;
  nlohmann::ordered_json json() const;
};

} // namespace LspPingTool
