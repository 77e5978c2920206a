#include "tools/StateFollower.h"

#include <nlohmann/json.hpp>

#include <sstream>
#include <utility>

#include "tools/StateFile.h"

namespace LspPingTool {

namespace {

// How `lspping state` starts its lines on standard error.
constexpr std::string_view prefix = "lspping: state: ";

std::vector<std::string> lines(const std::string &text) {
  std::vector<std::string> all;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(prefix)) {
      line.erase(0, prefix.size());
    }
    if (!line.empty()) {
      all.push_back(std::move(line));
    }
  }
  return all;
}

} // namespace

StateFollower::StateFollower(Kiv::EventLoop &loop, const StateOptions &state,
                             std::string program)
    : loop_(loop), argv_{std::move(program), "state", "--json"},
      name_(stateName(state.file, state.sources)) {
  for (const StateSource &source : state.sources) {
    argv_.insert(argv_.end(), {"--from", source.text()});
  }
  if (!state.file.empty()) {
    argv_.insert(argv_.end(), {"--state", state.file});
  }
}

StateFollower::~StateFollower() = default;

bool StateFollower::read(bool whole, std::function<void(StateReading)> done) {
  if (reading()) {
    return false;
  }
  done_ = std::move(done);
  child_ = std::make_unique<ChildProcess>(
      loop_, argv_, timeLimit, [this, whole](ChildProcess::Result result) {
        childDone(std::move(result), whole);
      });
  return true;
}

void StateFollower::parse(std::string text, StateReading &reading) {
  reading.document = nlohmann::json::parse(text, nullptr, false);
  if (reading.document->is_discarded()) {
    reading.document.reset();
    reading.error = "lspping state: its output is not JSON";
  } else {
    last_ = std::move(text);
  }
}

void StateFollower::lastIs(const nlohmann::json &document) {
  last_ = stateDocumentText(document);
}

void StateFollower::childDone(ChildProcess::Result result, bool whole) {
  child_.reset();
  StateReading reading;
  reading.notes = lines(result.err);
  if (!result.failure.empty() || result.status != 0) {
    // The child's last line says why; the others are its notes.
    reading.error = !result.failure.empty() ? "lspping state: " + result.failure
                    : reading.notes.empty() ? "lspping state: exit status " +
                                                  std::to_string(result.status)
                                            : reading.notes.back();
    if (result.failure.empty() && !reading.notes.empty()) {
      reading.notes.pop_back();
    }
  } else {
    reading.unchanged = result.out == last_;
    if (whole || !reading.unchanged) {
      parse(std::move(result.out), reading);
    }
  }
  const auto done = std::exchange(done_, nullptr);
  done(std::move(reading));
}

} // namespace LspPingTool
