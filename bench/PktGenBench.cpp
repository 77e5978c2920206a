// Building the reference echo request the way the transmit path does: a
// pooled packet, a generator made by its factory, every layer written in
// place, lengths and checksums filled in at the end. Prints a
// "RESULT name=... frames_per_s=..." line per benchmark, so that the peer
// harness (bench_runner.py) can set it beside other builders.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <unistd.h>

#include "LspPing/LspPingPktGen.h"
#include "LspPing/NtpTime.h"
#include "Wirx/PktPool.h"

namespace {

using LspPing::U32;

const Wirx::EthAddr dstMac{{0x02, 0, 0, 0, 0, 0x02}};
const Wirx::EthAddr srcMac{{0x02, 0, 0, 0, 0, 0x01}};
const Wirx::IpAddr srcIp(0x0a000001);  // 10.0.0.1
const Wirx::IpAddr dstIp(0x7f000001);  // 127.0.0.1
const Wirx::IpAddr prefix(0x0a010101); // 10.1.1.1

// Ethernet, labels 100 and 200, IPv4 with Router Alert, UDP 49152 -> 3503,
// echo request, Target FEC Stack with an LDP IPv4 sub-TLV 10.1.1.1/32.
Orv::Ptr<Wirx::Pkt> buildRequest(U32 sequence,
                                 const LspPing::NtpTimeU64 &sent) {
  auto pkt = Wirx::Pkt::make();
  auto gen = LspPing::lspPingPktGenFactory(pkt);
  gen->initializedIs(true);
  gen->addEtherHdr(dstMac, srcMac, Wirx::EthHdr::etherTypeMpls);
  gen->addMplsHdr(100, 0, false, 255);
  gen->addMplsHdr(200, 0, true, 255);
  gen->addIpHdr(srcIp, dstIp, 1, 17);
  gen->addUdpHdr(49152, 3503);
  gen->addLspPingHdr(1, 0, 1, 2, 0, 0, 7, sequence, sent.seconds,
                     sent.microSeconds, 0, 0);
  gen->addLspPingTlvHdr(1, 0);
  gen->addLspPingLdpIpv4SubTlv(prefix, 32);
  gen->computeHdrLenChecksum();
  return pkt;
}

void rate(benchmark::State &state) {
  state.counters["frames_per_s"] = benchmark::Counter(
      double(state.iterations()), benchmark::Counter::kIsRate);
}

// A fixed time stamp: the generator's own cost.
void buildReferenceRequest(benchmark::State &state) {
  Wirx::PktPool::instance().reserve(16);
  const LspPing::NtpTimeU64 sent{3972672000u, 0x12345678};
  U32 sequence = 0;
  for (auto _ : state) {
    auto pkt = buildRequest(++sequence, sent);
    benchmark::DoNotOptimize(pkt->data());
  }
  rate(state);
}
BENCHMARK(buildReferenceRequest);

// With the sent time read from the clock per frame, as a client stamps its
// requests (and as the peers' builders do).
void buildReferenceRequestStamped(benchmark::State &state) {
  Wirx::PktPool::instance().reserve(16);
  U32 sequence = 0;
  for (auto _ : state) {
    auto pkt = buildRequest(++sequence, LspPing::NtpTime::ntpTime());
    benchmark::DoNotOptimize(pkt->data());
  }
  rate(state);
}
BENCHMARK(buildReferenceRequestStamped);

// The console table, plus one RESULT line per benchmark: its median when
// repeated, else its single run.
class ResultLineReporter : public benchmark::ConsoleReporter {
public:
  // Colours only on a terminal, so that the harness reads plain lines.
  ResultLineReporter()
      : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {
  }

  void ReportRuns(const std::vector<Run> &runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run &run : runs) {
      const bool single = run.aggregate_name.empty() && run.repetitions <= 1;
      const auto counter = run.counters.find("frames_per_s");
      if ((single || run.aggregate_name == "median") &&
          counter != run.counters.end()) {
        std::printf("RESULT name=pktgen_%s frames_per_s=%.1f\n",
                    run.run_name.function_name.c_str(),
                    double(counter->second));
        std::fflush(stdout);
      }
    }
  }
};

} // namespace

int main(int argc, char **argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  ResultLineReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
