#include "tools/StateSource.h"

#include <functional>
#include <iterator>
#include <memory>
#include <utility>

#include "Kiv/EventLoop.h"
#include "Kiv/TimerWheel.h"
#include "Orv/Clock.h"
#include "tools/ChildProcess.h"
#include "tools/FrrState.h"
#include "tools/KernelMplsRoutes.h"
#include "tools/StateCombine.h"
#include "tools/StateFile.h"
#include "tools/StateSourceError.h"

namespace LspPingTool {

namespace {

constexpr std::string_view frrPrefix = "frr:";

// FRR's pathspaces are directory names.
bool isPathspace(std::string_view name) {
  return !name.empty() && name.size() <= 64 &&
         name.find_first_not_of("abcdefghijklmnopqrstuvwxyz"
                                "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.-") ==
             std::string_view::npos &&
         name != "." && name != "..";
}

// The last line a failed command wrote: its reason.
std::string lastLine(const std::string &text) {
  const std::size_t end = text.find_last_not_of(" \t\r\n");
  if (end == std::string::npos) {
    return "";
  }
  const std::size_t start = text.find_last_of('\n', end);
  return text.substr(start == std::string::npos ? 0 : start + 1,
                     end + 1 - (start == std::string::npos ? 0 : start + 1));
}

} // namespace

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
  // Runs the steps that need no program from the loop.
  Kiv::Timer stepTimer_;
};

std::optional<StateSource> StateSource::fromString(std::string_view text) {
  if (text == "frr") {
    return StateSource{Kind::frr, ""};
  }
  if (text == "kernel") {
    return StateSource{Kind::kernel, ""};
  }
  if (text.substr(0, frrPrefix.size()) == frrPrefix &&
      isPathspace(text.substr(frrPrefix.size()))) {
    return StateSource{Kind::frr, std::string(text.substr(frrPrefix.size()))};
  }
  return std::nullopt;
}

std::string StateSource::text() const {
  if (kind == Kind::kernel) {
    return "kernel";
  }
  return pathspace.empty() ? "frr" : std::string(frrPrefix) + pathspace;
}

StateReader::StateReader(Kiv::EventLoop &loop, std::string stateFile,
                         std::vector<StateSource> sources)
    : loop_(loop), stateFile_(std::move(stateFile)),
      sources_(std::move(sources)), name_(stateName(stateFile_, sources_)),
      stepTimer_(loop.wheel(), [this] { step(); }) {}

StateReader::~StateReader() = default;

bool StateReader::read(std::function<void(StateReading)> done) {
  if (reading()) {
    return false;
  }
  done_ = std::move(done);
  source_ = 0;
  command_ = 0;
  outputs_ = {};
  documents_.clear();
  notes_.clear();
  stepTimer_.timeMinIs(Orv::now());
  return true;
}

void StateReader::step() {
  if (source_ < sources_.size()) {
    if (sources_[source_].kind == StateSource::Kind::frr) {
      runCommand();
      return;
    }
    try {
      KernelMplsState kernel = readKernelMplsRoutes();
      if (!kernel.mplsRouting) {
        notes_.push_back("kernel: no MPLS routing here (the kernel answers "
                         "a dump of label routes with IP routes only): no "
                         "label route from the kernel");
      }
      sourceRead(std::move(kernel.document));
    } catch (const StateSourceError &e) {
      fail(e.what());
    }
    return;
  }
  nlohmann::json combined = nlohmann::json::object();
  if (!stateFile_.empty()) {
    try {
      combined = readStateFile(stateFile_);
    } catch (const StateFileError &e) {
      fail(e.what());
      return;
    }
  }
  for (nlohmann::json &document : documents_) {
    combined = combineStates(std::move(combined), std::move(document));
  }
  finish({std::move(combined), "", std::move(notes_)});
}

void StateReader::runCommand() {
  const std::size_t count = std::size(frrCommands);
  while (command_ < count &&
         !frrConfigHas(outputs_.runningConfig, frrCommands[command_].needs)) {
    ++command_;
  }
  const StateSource &source = sources_[source_];
  if (command_ == count) {
    try {
      sourceRead(frrState(outputs_));
    } catch (const StateSourceError &e) {
      fail(source.text() + ": " + e.what());
    }
    return;
  }
  std::vector<std::string> argv = {"vtysh"};
  if (!source.pathspace.empty()) {
    argv.insert(argv.end(), {"-N", source.pathspace});
  }
  argv.insert(argv.end(), {"-c", std::string(frrCommands[command_].command)});
  child_ = std::make_unique<ChildProcess>(
      loop_, argv, commandTimeLimit,
      [this](ChildProcess::Result result) { commandDone(std::move(result)); });
}

// Called by the command's process, which the next command (or the end of
// the reading) replaces.
void StateReader::commandDone(ChildProcess::Result result) {
  const FrrCommand &command = frrCommands[command_];
  const std::string where =
      sources_[source_].text() + ": " + std::string(command.command) + ": ";
  if (!result.failure.empty()) {
    fail(where + "vtysh: " + result.failure);
    return;
  }
  if (result.status != 0) {
    std::string why = lastLine(result.err);
    why = why.empty() ? lastLine(result.out) : why;
    fail(where + (why.empty()
                      ? "vtysh: exit status " + std::to_string(result.status)
                      : why));
    return;
  }
  outputs_.*command.output = std::move(result.out);
  ++command_;
  runCommand();
}

void StateReader::sourceRead(nlohmann::json document) {
  documents_.push_back(std::move(document));
  ++source_;
  command_ = 0;
  outputs_ = {};
  stepTimer_.timeMinIs(Orv::now());
}

void StateReader::fail(std::string error) {
  finish({std::nullopt, std::move(error), std::move(notes_)});
}

void StateReader::finish(StateReading reading) {
  child_.reset();
  documents_.clear();
  outputs_ = {};
  const auto done = std::exchange(done_, nullptr);
  done(std::move(reading));
}

std::string stateName(const std::string &stateFile,
                      const std::vector<StateSource> &sources) {
  std::string name;
  for (const StateSource &source : sources) {
    name += (name.empty() ? "" : " + ") + source.text();
  }
  if (!stateFile.empty()) {
    name += (name.empty() ? "" : " + ") + stateFile;
  }
  return name;
}

StateReading readState(const std::string &stateFile,
                       const std::vector<StateSource> &sources) {
  Kiv::EventLoop loop;
  StateReading result;
  StateReader reader(loop, stateFile, sources);
  reader.read([&](StateReading reading) {
    result = std::move(reading);
    loop.stop();
  });
  loop.run();
  return result;
}

} // namespace LspPingTool
