// `lspping ping --fec-file` under load: one process pinging many LSPs, one
// request per LSP per interval, over a veth to one `lspping responder` in
// two namespaces this program creates (names unique to the run) and tears
// down. The responder's state binds every FEC of the file, so each request
// is answered by the egress. It reports the client's CPU time per request
// while it runs steadily (for T seconds, after a warm-up of W seconds in
// which it reads the file and starts the sessions), the requests and
// replies it counted, and its memory.
//
//   FecFileLoad [--lsps N] [--interval S] [--warmup W] [--seconds T]
//               [--lspping PATH]
//
// Needs root. The client runs on CPU 0, the responder on CPU 1.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

#include <nlohmann/json.hpp>

#include "LoadSupport.h"

namespace {

using LspPingBench::Clock;
using LspPingBench::fec;
using LspPingBench::since;
using LspPingBench::Usage;
using LspPingBench::usage;

struct Options {
  unsigned long lsps = 100000;
  double interval = 1.0;
  double warmup = 10.0;
  double seconds = 20.0;
  std::string lspping = LSPPING_PROGRAM;
};

void writeFiles(const Options &o, const std::string &dir) {
  LspPingBench::writeEgressState(dir + "/state.json", o.lsps);
  std::ofstream lines(dir + "/lsps.txt");
  for (unsigned long i = 0; i < o.lsps; ++i) {
    lines << "ldp " << fec(i) << "\n";
  }
}

int run(const Options &o) {
  const LspPingBench::Testbed bed("FecFileLoad");
  if (!bed.ready()) {
    return 2;
  }
  const LspPingTest::Netns &client = bed.a();
  const LspPingTest::Netns &router = bed.b();
  const std::string &clientIntf = bed.aIntf();
  const std::string &dir = bed.dir();
  writeFiles(o, dir);
  LspPingTest::NetnsProcess responder(
      router, {"taskset", "-c", "1", o.lspping, "responder", "--state",
               dir + "/state.json", "--rate", "0"});
  if (!responder.lineWith(1, "answering on", 60)) {
    std::cerr << "FecFileLoad: the responder did not start\n";
    return 2;
  }
  char interval[32];
  std::snprintf(interval, sizeof interval, "%g", o.interval);
  const auto start = Clock::now();
  LspPingTest::NetnsProcess ping(
      client, {"taskset", "-c", "0", o.lspping, "ping", "--fec-file",
               dir + "/lsps.txt", "-I", clientIntf, "--nexthop", "10.0.0.2",
               "-c", "0", "-i", interval, "-q", "--json"});
  std::this_thread::sleep_for(std::chrono::duration<double>(o.warmup));
  const double steadyStart = since(start);
  const Usage before = usage(ping.pid());
  std::this_thread::sleep_for(std::chrono::duration<double>(o.seconds));
  const double steadyEnd = since(start);
  const Usage after = usage(ping.pid());
  ping.signal(SIGINT);
  unsigned long sent = 0, received = 0, summaries = 0;
  while (const auto line = ping.line(0, 60)) {
    const auto summary = nlohmann::json::parse(*line);
    sent += summary["sent"].get<unsigned long>();
    received += summary["received"].get<unsigned long>();
    ++summaries;
  }
  const double wall = since(start);
  const int status = ping.exitStatus();
  responder.signal(SIGTERM);
  const auto counters = responder.lineWith(1, "counters:");

  const double rate = double(o.lsps) / o.interval;
  const double steady = steadyEnd - steadyStart;
  const double user = after.user - before.user;
  const double cpu = user + after.system - before.system;
  std::printf("LSPs:                 %lu, one request each every %g s: %.0f "
              "requests a second\n",
              o.lsps, o.interval, rate);
  std::printf("client, %.1f s in all: %lu requests sent, %lu replies, %lu "
              "summaries, exit status %d\n",
              wall, sent, received, summaries, status);
  std::printf("steady, %.1f s:        client CPU %.2f s (%.2f s in user "
              "space): %.2f us per request (a request and its reply; %.2f us "
              "in user space), %.0f requests per CPU second\n",
              steady, cpu, user, cpu * 1e6 / (rate * steady),
              user * 1e6 / (rate * steady), rate * steady / cpu);
  std::printf("client RSS:           %ld KiB after the warm-up, %ld KiB at "
              "the end\n",
              before.rss, after.rss);
  std::printf("responder %s\n",
              counters ? counters->c_str() : "counters missing");
  return status <= 1 && summaries == o.lsps ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
  Options o;
  CLI::App app{"lspping ping --fec-file under load, in namespaces of its own",
               "FecFileLoad"};
  app.add_option("--lsps", o.lsps, "LSPs in the FEC file");
  app.add_option("--interval", o.interval,
                 "seconds between requests of an LSP");
  app.add_option("--warmup", o.warmup, "seconds before measuring");
  app.add_option("--seconds", o.seconds, "seconds measured");
  app.add_option("--lspping", o.lspping, "the program");
  return LspPingBench::mainOf(app, argc, argv, [&] { return run(o); });
}
