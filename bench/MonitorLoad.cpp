// `lspping monitor` under load: one monitor watching many LSPs, one
// request per LSP per interval, over a veth to one `lspping responder` in
// two namespaces this program creates (names unique to the run) and tears
// down. The responder's state binds every FEC, so each LSP is up. It
// reports the monitor's CPU while it runs steadily (for T seconds, after a
// warm-up of W seconds in which it reads its file and starts the LSPs),
// its resident memory beside a monitor of one LSP's, and the time and size of
// scrapes of its /metrics, taken as Prometheus takes them (a connection,
// GET, the answer read to its end).
//
//   MonitorLoad [--lsps N] [--interval S] [--warmup W] [--seconds T]
//               [--scrapes K] [--lspping PATH]
//
// Needs root. The monitor runs on CPU 0, the responder on CPU 1.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "LoadSupport.h"

namespace {

using LspPingBench::Clock;
using LspPingBench::fec;
using LspPingBench::since;
using LspPingBench::Usage;
using LspPingBench::usage;

constexpr int metricsPort = 9101;

struct Options {
  unsigned long lsps = 10000;
  double interval = 1.0;
  double warmup = 15.0;
  double seconds = 20.0;
  int scrapes = 10;
  std::string lspping = LSPPING_PROGRAM;
};

void writeFiles(const Options &o, const std::string &dir,
                const std::string &intf) {
  LspPingBench::writeEgressState(dir + "/state.json", o.lsps);
  std::ofstream config(dir + "/monitor.json");
  config << "{ \"interval\": " << o.interval << ", \"interface\": \"" << intf
         << "\", \"nexthop\": \"10.0.0.2\", \"lsps\": [\n";
  for (unsigned long i = 0; i < o.lsps; ++i) {
    config << (i ? ",\n" : "") << "  { \"name\": \"lsp" << i
           << "\", \"fec\": \"ldp " << fec(i) << "\" }";
  }
  config << "\n] }\n";
  std::ofstream(dir + "/one.json")
      << "{ \"interval\": " << o.interval << ", \"interface\": \"" << intf
      << "\", \"nexthop\": \"10.0.0.2\", \"lsps\": [ { \"name\": \"lsp0\", "
      << "\"fec\": \"ldp " << fec(0) << "\" } ] }\n";
}

struct Scrape {
  double seconds = 0;
  std::size_t bytes = 0;
  bool ok = false;
};

// One scrape of the monitor's /metrics from inside its namespace.
Scrape scrape(const LspPingTest::Netns &netns) {
  Scrape result;
  const auto start = Clock::now();
  int fd = -1;
  {
    const LspPingTest::NetnsScope scope(netns);
    fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  }
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_port = htons(metricsPort);
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const std::string request = "GET /metrics HTTP/1.1\r\nHost: monitor\r\n\r\n";
  std::string answer;
  if (fd >= 0 &&
      connect(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr) == 0 &&
      send(fd, request.data(), request.size(), MSG_NOSIGNAL) ==
          ssize_t(request.size())) {
    char buffer[1 << 16];
    ssize_t n;
    while ((n = recv(fd, buffer, sizeof buffer, 0)) > 0) {
      answer.append(buffer, std::size_t(n));
    }
  }
  if (fd >= 0) {
    close(fd);
  }
  result.seconds = since(start);
  const auto body = answer.find("\r\n\r\n");
  result.ok = answer.rfind("HTTP/1.1 200", 0) == 0 && body != std::string::npos;
  result.bytes = result.ok ? answer.size() - body - 4 : 0;
  return result;
}

int run(const Options &o) {
  const LspPingBench::Testbed bed("MonitorLoad");
  if (!bed.ready()) {
    return 2;
  }
  const LspPingTest::Netns &client = bed.a();
  const LspPingTest::Netns &router = bed.b();
  const std::string &clientIntf = bed.aIntf();
  const std::string &dir = bed.dir();
  writeFiles(o, dir, clientIntf);
  LspPingTest::NetnsProcess responder(
      router, {"taskset", "-c", "1", o.lspping, "responder", "--state",
               dir + "/state.json", "--rate", "0"});
  if (!responder.lineWith(1, "answering on", 60)) {
    std::cerr << "MonitorLoad: the responder did not start\n";
    return 2;
  }

  // The memory of a monitor of one LSP (its sockets, rings and buffers),
  // the base the other LSPs' memory is measured from.
  long oneRss = 0;
  {
    LspPingTest::NetnsProcess idle(client,
                                   {"taskset", "-c", "0", o.lspping, "monitor",
                                    "--config", dir + "/one.json"});
    if (!idle.lineWith(1, " up (", 30)) {
      std::cerr << "MonitorLoad: the monitor of one LSP did not start\n";
      return 2;
    }
    oneRss = usage(idle.pid()).rss;
    idle.signal(SIGTERM);
    idle.exitStatus();
  }

  const auto start = Clock::now();
  LspPingTest::NetnsProcess monitor(
      client, {"taskset", "-c", "0", o.lspping, "monitor", "--config",
               dir + "/monitor.json", "--metrics",
               "127.0.0.1:" + std::to_string(metricsPort)});
  // Its log is read as it comes, so that a full pipe never stops it.
  std::atomic<unsigned long> ups = 0, downs = 0;
  std::atomic<bool> ready = false;
  std::thread reader([&] {
    while (const auto line = monitor.line(1, 3600)) {
      ready = ready || line->find("watching") != std::string::npos;
      ups += line->find(" up (") != std::string::npos;
      downs += line->find(" down: ") != std::string::npos;
    }
  });
  std::this_thread::sleep_for(std::chrono::duration<double>(o.warmup));
  const double steadyStart = since(start);
  const Usage before = usage(monitor.pid());
  std::this_thread::sleep_for(std::chrono::duration<double>(o.seconds));
  const double steadyEnd = since(start);
  const Usage after = usage(monitor.pid());

  std::vector<Scrape> scrapes;
  for (int i = 0; i < o.scrapes; ++i) {
    scrapes.push_back(scrape(client));
  }
  const Usage scraped = usage(monitor.pid());
  monitor.signal(SIGTERM);
  const int status = monitor.exitStatus();
  reader.join();
  responder.signal(SIGTERM);
  const auto counters = responder.lineWith(1, "counters:");

  const double rate = double(o.lsps) / o.interval;
  const double steady = steadyEnd - steadyStart;
  const double user = after.user - before.user;
  const double cpu = user + after.system - before.system;
  std::vector<double> times;
  std::size_t bytes = 0;
  int good = 0;
  for (const Scrape &s : scrapes) {
    good += s.ok;
    times.push_back(s.seconds * 1e3);
    bytes = std::max(bytes, s.bytes);
  }
  std::sort(times.begin(), times.end());
  const double scrapeCpu =
      scraped.user + scraped.system - after.user - after.system;
  std::printf("LSPs:                 %lu, one request each every %g s: %.0f "
              "requests a second\n",
              o.lsps, o.interval, rate);
  std::printf("monitor:              ready %s, %lu up and %lu down events, "
              "exit status %d\n",
              ready ? "yes" : "no", ups.load(), downs.load(), status);
  std::printf("steady, %.1f s:        monitor CPU %.2f s (%.2f s in user "
              "space): %.1f %% of a core, %.2f us per request and reply\n",
              steady, cpu, user, 100 * cpu / steady,
              cpu * 1e6 / (rate * steady));
  std::printf("memory:               RSS %ld KiB after the warm-up, %ld KiB "
              "at the end, %ld KiB with one LSP: %.2f KiB per further LSP\n",
              before.rss, after.rss, oneRss,
              double(after.rss - oneRss) / double(o.lsps - 1));
  if (!times.empty()) {
    std::printf("scrapes:              %d of %zu answered, %zu bytes; time "
                "min %.1f ms, median %.1f ms, max %.1f ms; monitor CPU %.1f "
                "ms per scrape\n",
                good, scrapes.size(), bytes, times.front(),
                times[times.size() / 2], times.back(),
                scrapeCpu * 1e3 / double(scrapes.size()));
  }
  std::printf("responder %s\n",
              counters ? counters->c_str() : "counters missing");
  return status == 0 && good == o.scrapes ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
  Options o;
  CLI::App app{"lspping monitor under load, in namespaces of its own",
               "MonitorLoad"};
  app.add_option("--lsps", o.lsps, "LSPs watched");
  app.add_option("--interval", o.interval,
                 "seconds between requests of an LSP");
  app.add_option("--warmup", o.warmup, "seconds before measuring");
  app.add_option("--seconds", o.seconds, "seconds measured");
  app.add_option("--scrapes", o.scrapes, "scrapes of /metrics timed");
  app.add_option("--lspping", o.lspping, "the program");
  return LspPingBench::mainOf(app, argc, argv, [&] { return run(o); });
}
