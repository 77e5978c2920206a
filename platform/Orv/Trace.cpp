#include "Orv/Trace.h"

#include <algorithm>
#include <iostream>
#include <utility>
#include <vector>

namespace Orv {

namespace {

struct TraceRegistry {
  std::vector<TraceSource *> sources;
  std::vector<std::pair<std::string, int>> rules;
  StderrTraceSink stderrSink;
  TraceSink *sink = &stderrSink;
};

TraceRegistry &registry() {
  static TraceRegistry instance;
  return instance;
}

bool matches(std::string_view pattern, std::string_view name) {
  if (!pattern.empty() && pattern.back() == '*') {
    return name.substr(0, pattern.size() - 1) ==
           pattern.substr(0, pattern.size() - 1);
  }
  return pattern == name;
}

} // namespace

void StderrTraceSink::write(std::string_view source, int level,
                            std::string_view text) {
  std::cerr << source << '[' << level << "] " << text << '\n';
}

TraceSource::TraceSource(std::string_view name) : name_(name) {
  TraceRegistry &reg = registry();
  reg.sources.push_back(this);
  for (const auto &[pattern, level] : reg.rules) {
    if (matches(pattern, name_)) {
      level_ = level;
    }
  }
}

TraceSource::~TraceSource() {
  auto &sources = registry().sources;
  sources.erase(std::remove(sources.begin(), sources.end(), this),
                sources.end());
}

void TraceSource::write(int level, const std::string &text) const {
  registry().sink->write(name_, level, text);
}

void traceLevelIs(std::string_view pattern, int level) {
  TraceRegistry &reg = registry();
  // A pattern given again replaces its rule, so that a host that turns a
  // source on and off for ever keeps one rule, not one per turn. Later
  // rules still win over earlier ones for the sources both match.
  std::erase_if(reg.rules,
                [&](const auto &rule) { return rule.first == pattern; });
  reg.rules.emplace_back(pattern, level);
  for (TraceSource *source : reg.sources) {
    if (matches(pattern, source->name())) {
      source->levelIs(level);
    }
  }
}

void traceSinkIs(TraceSink *sink) {
  TraceRegistry &reg = registry();
  reg.sink = sink ? sink : &reg.stderrSink;
}

} // namespace Orv
