// One refresh of a router's state from FRR with many LDP prefixes, on
// generated outputs of the size a router with that many FECs gives: parse
// vtysh's JSON and map it (frrState), combine it with the state file's
// (combineStates, here none), then load it into the responder's tables
// (loadStateDocument), and each of those steps alone: what a daemon's
// state child (`lspping state --json`) does. Then what the daemon's own
// loop does with the child's document: compare it with the last one, and
// parse it when it changed.
#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <nlohmann/json.hpp>

#include <string>

#include "GeneratedFrr.h"
#include "tools/FrrState.h"
#include "tools/StateCombine.h"
#include "tools/StateFile.h"

namespace {

using nlohmann::json;

// A transit router of a line: every prefix 10.x.y.z/32 bound by both
// neighbours, the one behind the IGP's next hop (e2) in use.
LspPingTool::FrrOutputs outputs(int prefixes) {
  auto [bindings, routes] = LspPingBench::ldpOutputs(prefixes, 0, "10.1.23.3");
  LspPingTool::FrrOutputs o;
  o.runningConfig = "mpls ldp\n";
  o.ldpBindings = std::move(bindings);
  o.routes = std::move(routes);
  o.mplsTable = "{}";
  o.interfaces = R"({"e1":{"mtu":1500},"e2":{"mtu":1500}})";
  o.ldpDiscovery = R"({"interfaces":{
    "e1":{"adjacencies":[{"lsrId":"10.0.0.1","sourceAddress":"10.1.12.1"}]},
    "e2":{"adjacencies":[{"lsrId":"10.0.0.3","sourceAddress":"10.1.23.3"}]}}})";
  return o;
}

long maxRssKiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

void BM_FrrRefresh(benchmark::State &state) {
  const LspPingTool::FrrOutputs o = outputs(int(state.range(0)));
  const long before = maxRssKiB();
  for (auto _ : state) {
    const json document =
        LspPingTool::combineStates(json::object(), LspPingTool::frrState(o));
    benchmark::DoNotOptimize(LspPingTool::loadStateDocument(document, "bench"));
  }
  state.counters["outputMiB"] =
      double(o.ldpBindings.size() + o.routes.size()) / (1 << 20);
  state.counters["peakRssGrowthMiB"] = double(maxRssKiB() - before) / 1024;
}
BENCHMARK(BM_FrrRefresh)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

// The part of the mapping that only parses vtysh's JSON.
void BM_FrrParse(benchmark::State &state) {
  const LspPingTool::FrrOutputs o = outputs(int(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(json::parse(o.ldpBindings));
    benchmark::DoNotOptimize(json::parse(o.routes));
  }
}
BENCHMARK(BM_FrrParse)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

void BM_FrrMap(benchmark::State &state) {
  const LspPingTool::FrrOutputs o = outputs(int(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(LspPingTool::frrState(o));
  }
}
BENCHMARK(BM_FrrMap)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_FrrCombine(benchmark::State &state) {
  const json mapped = LspPingTool::frrState(outputs(int(state.range(0))));
  for (auto _ : state) {
    state.PauseTiming();
    json source = mapped;
    state.ResumeTiming();
    benchmark::DoNotOptimize(
        LspPingTool::combineStates(json::object(), std::move(source)));
  }
}
BENCHMARK(BM_FrrCombine)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

void BM_FrrLoad(benchmark::State &state) {
  const json mapped = LspPingTool::frrState(outputs(int(state.range(0))));
  for (auto _ : state) {
    benchmark::DoNotOptimize(LspPingTool::loadStateDocument(mapped, "bench"));
  }
}
BENCHMARK(BM_FrrLoad)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(5);

// What a daemon's loop does with a reading of its state child (`lspping
// state --json`, which does all the above away from it): compares the
// document's text with the last one, and parses it when it changed.
void BM_StateDocumentParse(benchmark::State &state) {
  const std::string text = LspPingTool::stateDocumentText(
      LspPingTool::frrState(outputs(int(state.range(0)))));
  for (auto _ : state) {
    benchmark::DoNotOptimize(json::parse(text));
  }
  state.counters["documentMiB"] = double(text.size()) / (1 << 20);
}
BENCHMARK(BM_StateDocumentParse)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

void BM_FrrRefreshUnchanged(benchmark::State &state) {
  const std::string text = LspPingTool::stateDocumentText(
      LspPingTool::frrState(outputs(int(state.range(0)))));
  const std::string last = text;
  for (auto _ : state) {
    benchmark::DoNotOptimize(text == last);
  }
}
BENCHMARK(BM_FrrRefreshUnchanged)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(100);

} // namespace
