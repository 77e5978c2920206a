#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace LspPingTool {

// Where a router's forwarding state is read besides a state file: FRR,
// through vtysh (of a pathspace, `frr:NAME`), or the kernel's label
// routes (`kernel`).
struct StateSource {
  enum class Kind { frr, kernel };

  Kind kind = Kind::frr;
  // FRR's pathspace (vtysh -N NAME); empty for the default one.
  std::string pathspace;

  // "frr", "frr:NAME" or "kernel"; nothing for anything else.
  static std::optional<StateSource> fromString(std::string_view text);
  std::string text() const;
};

// What one reading of the sources found.
struct StateReading {
  // The state document, the state file's entries over the sources'
  // (combineStates), the sources in their order; none when a source or
  // the file could not be read, or (StateFollower) when it is
  // `unchanged`.
  std::optional<nlohmann::json> document;
  // Why not, in one line naming the source or file.
  std::string error;
  // What a source says besides, in one line each (a kernel without MPLS
  // routing).
  std::vector<std::string> notes;
  // The reading found what the one before it did.
  bool unchanged = false;
};

// What is read, for messages: "frr:r1 + router.json".
std::string stateName(const std::string &stateFile,
                      const std::vector<StateSource> &sources);

// Reads a router's forwarding state from its sources, one after the
// other, and its state file, to the end, on an event loop of its own: FRR's
// commands run as child processes, one at a time, each with a time limit.
StateReading readState(const std::string &stateFile,
                       const std::vector<StateSource> &sources);

} // namespace LspPingTool
