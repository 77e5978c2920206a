#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "tools/ChildProcess.h"
#include "tools/StateOptions.h"
#include "tools/StateSource.h"

namespace LspPingTool {

// A router's forwarding state as a daemon follows it, read away from the
// daemon's event loop: a child `lspping state --json` (this program again)
// asks the sources, maps and combines what they say with the state file
// and checks that it loads: with thousands of prefixes, work that would
// hold the loop for a good part of a second. The loop only reads the
// child's document as it comes, and parses it only when it differs from
// the last one: FRR's outputs carry timers that change at every reading,
// the document made of them does not.
class StateFollower {
public:
  // A reading that has not ended after this long has failed.
  static constexpr double timeLimit = 60.0;

  // `program` is this program, found again as the kernel knows it.
  StateFollower(Kiv::EventLoop &loop, const StateOptions &state,
                std::string program = "/proc/self/exe");
  StateFollower(const StateFollower &) = delete;
  StateFollower &operator=(const StateFollower &) = delete;
  ~StateFollower();

  // What is read, for messages: "frr:r1 + router.json".
  const std::string &name() const { return name_; }

  // Starts a reading; `done` gets it from the loop once it has ended,
  // `unchanged` when it found what the last reading that had a document
  // did, and then without one unless `whole`. False, and nothing
  // started, while one is under way.
  bool read(bool whole, std::function<void(StateReading)> done);
  // `document` is what the daemon read before it follows: a reading that
  // finds it again is unchanged.
  void lastIs(const nlohmann::json &document);
  bool reading() const { return static_cast<bool>(child_); }

private:
  void childDone(ChildProcess::Result result, bool whole);
  // The child's document, which the next readings are compared with.
  void parse(std::string text, StateReading &reading);

  Kiv::EventLoop &loop_;
  std::vector<std::string> argv_;
  std::string name_;
  std::unique_ptr<ChildProcess> child_;
  std::function<void(StateReading)> done_;
  // The last document as the child wrote it.
  std::string last_;
};

} // namespace LspPingTool
