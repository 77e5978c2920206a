#include <benchmark/benchmark.h>

#include <ctime>
#include <malloc.h>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingClientConfigColl.h"
#include "LspPing/LspPingClientStatusColl.h"
#include "LspPing/LspPingClientTxSm.h"
#include "Wirx/Pam.h"

namespace {

using namespace LspPing;

// Takes frames and lets them go, as a device that is never busy: the figure
// is then the cost of the transmit side alone.
class CountingPam : public Wirx::Pam {
public:
  CountingPam() : Pam("count") {}
  void txPktIs(const Orv::Ptr<Wirx::Pkt> &) override { ++frames; }
  Orv::U64 frames = 0;

private:
  void doGetRxPkt() override {}
};

double cpuSeconds() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

std::size_t heapInUse() { return mallinfo2().uordblks; }

void configure(LspPingClientConfig &config, U32 id) {
  config.srcEthAddrIs(*Wirx::EthAddr::fromString("02:00:00:00:00:01"));
  config.tunnelNexthopEthAddrIs(
      *Wirx::EthAddr::fromString("02:00:00:00:00:02"));
  config.srcIpAddrIs(Wirx::IpAddr(0x0a000001));
  config.dstIpAddrIs(Wirx::IpAddr(0x7f000001));
  config.srcUdpPortIs(49152);
  config.mplsLabelIs(0, Wirx::MplsLabel(16 + id % 100000));
  config.mplsTtlIs(0, 255);
  config.tunnelTypeIs(LspPingTunnelType::tunnelLdpIpv4);
  config.dstPrefixIs(Wirx::IpGenPrefix(Wirx::IpAddr(0x0a000000 + id), 32));
  config.txCountIs(LspPingTxCountConstants::infinite);
  config.txRateIs(1.0);
  // Spread the clients over the second, as independent starts would.
  config.pktDelayIs(double(id % 1000) / 1000.0);
}

// 100,000 clients, one request a second each, for 60 virtual seconds.
void hundredThousandClients(benchmark::State &state) {
  constexpr U32 clients = 100'000;
  constexpr double seconds = 60;
  for (auto _ : state) {
    auto wheel = Orv::make<Kiv::TimerWheel>();
    Kiv::VirtualTime time(wheel, 1'800'000'000.0);
    auto pam = Orv::make<CountingPam>();
    const std::size_t heapBefore = heapInUse();
    auto configs = lspPingClientConfigCollFactory("lpccc");
    auto statuses = lspPingClientStatusCollFactory("lpcsc");
    std::vector<Orv::Ptr<LspPingClientTxSm>> txSms;
    txSms.reserve(clients);
    for (U32 id = 1; id <= clients; ++id) {
      auto config = configs->pingClientConfigIs(id);
      configure(*config, id);
      auto txSm = lspPingClientTxSmFactory(
          id, config, statuses->pingClientStatusIs(id), wheel);
      txSm->lspPingClientTxPamIs(pam);
      txSms.push_back(txSm);
    }
    const double bytesPerClient =
        double(heapInUse() - heapBefore - clients * sizeof(txSms[0])) / clients;
    for (U32 id = 1; id <= clients; ++id) {
      configs->pingClientConfig(id)->enabledIs(true);
    }
    const double cpuBefore = cpuSeconds();
    time.runFor(seconds);
    const double cpu = cpuSeconds() - cpuBefore;
    state.counters["requests"] = double(pam->frames);
    state.counters["ns_per_request"] = cpu * 1e9 / double(pam->frames);
    state.counters["bytes_per_client"] = bytesPerClient;
  }
}
BENCHMARK(hundredThousandClients)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace
