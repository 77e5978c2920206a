#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Kiv/EventLoop.h"
#include "Kiv/TimerWheel.h"
#include "tools/ChildProcess.h"
#include "tools/FrrState.h"

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
  // the file could not be read.
  std::optional<nlohmann::json> document;
  // Why not, in one line naming the source or file.
  std::string error;
  // What a source says besides, in one line each (a kernel without MPLS
  // routing).
  std::vector<std::string> notes;
};

// Reads a router's forwarding state from its sources, one after the
// other, and its state file: the piece the hosts of the echo responder
// share. FRR's commands run as child processes whose output the event loop
// reads as it comes, so the loop goes on answering meanwhile.
class StateReader {
public:
  // A command that has not ended after this long has failed.
  static constexpr double commandTimeLimit = 30.0;

  StateReader(Kiv::EventLoop &loop, std::string stateFile,
              std::vector<StateSource> sources);
  StateReader(const StateReader &) = delete;
  StateReader &operator=(const StateReader &) = delete;
  ~StateReader();

  // What is read, for messages: "frr:r1 + router.json".
  const std::string &name() const { return name_; }

  // Starts a reading; `done` gets it from the loop once it is complete.
  // Only one reading runs at a time: false, and nothing started, while
  // one is under way.
  bool read(std::function<void(StateReading)> done);
  bool reading() const { return static_cast<bool>(done_); }

private:
  void step();
  void runCommand();
  void commandDone(ChildProcess::Result result);
  void sourceRead(nlohmann::json document);
  void fail(std::string error);
  void finish(StateReading reading);

  Kiv::EventLoop &loop_;
  const std::string stateFile_;
  const std::vector<StateSource> sources_;
  std::string name_;
  std::function<void(StateReading)> done_;
  // The reading under way: the source being read, FRR's next command and
  // what was read so far.
  std::size_t source_ = 0;
  std::size_t command_ = 0;
  FrrOutputs outputs_;
  std::vector<nlohmann::json> documents_;
  std::vector<std::string> notes_;
  std::unique_ptr<ChildProcess> child_;
  // Each FRR source's last outputs and their mapping: mapping many
  // prefixes holds the loop for a while, and FRR mostly says the same.
  std::map<std::size_t, std::pair<FrrOutputs, nlohmann::json>> mapped_;
  // Runs the steps that need no program from the loop.
  Kiv::Timer stepTimer_;
};

// One reading to its end, on a loop of its own.
StateReading readState(const std::string &stateFile,
                       const std::vector<StateSource> &sources);

} // namespace LspPingTool
