#include <benchmark/benchmark.h>

#include <cstdio>

#include "LspPing/LspPingPduParser.h"
#include "Wirx/Pkt.h"

namespace {

// Echo request header plus a Target FEC Stack TLV with an LDP IPv4 sub-TLV.
constexpr Orv::U8 request[] = {
    0x00, 0x01, 0x00, 0x00, 0x01, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x07,
    0x00, 0x00, 0x00, 0x01, 0xe8, 0x12, 0x34, 0x56, 0x80, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x0c,
    0x00, 0x01, 0x00, 0x05, 0x0a, 0x01, 0x01, 0x01, 0x20, 0x00, 0x00, 0x00};

// The parser as the receive path uses it: made by its factory per packet.
void parseRequest(benchmark::State &state) {
  auto pkt = Wirx::Pkt::copyOf(request, sizeof request);
  for (auto _ : state) {
    auto parser = LspPing::lspPingPduParserFactory(pkt, 0);
    parser->initializedIs(true);
    benchmark::DoNotOptimize(parser->valid());
  }
  state.counters["frames_per_s"] = benchmark::Counter(
      double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(parseRequest);

// The same parse with the parser on the stack: the cost of the walk alone.
void parseRequestOnStack(benchmark::State &state) {
  auto pkt = Wirx::Pkt::copyOf(request, sizeof request);
  for (auto _ : state) {
    LspPing::LspPingPduParser parser(pkt, 0);
    parser.initializedIs(true);
    benchmark::DoNotOptimize(parser.valid());
  }
}
BENCHMARK(parseRequestOnStack);

} // namespace
