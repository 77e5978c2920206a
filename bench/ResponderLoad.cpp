// `lspping responder` under load: a million frames, sent as fast as one
// AF_PACKET socket with sendmmsg can, over a veth into one responder, in
// two namespaces this program creates (names unique to the run) and tears
// down. It reports what the responder counted (every frame accounted for),
// replies per second, the responder's CPU time per frame and its memory
// at start and end.
//
//   ResponderLoad [--frames N] [--mix valid|mixed] [--lspping PATH]
//   ResponderLoad --gaps SECONDS [--frr PREFIXES] [--refresh SECONDS]
//
// With --gaps, requests go at a steady 5,000 per second for that long and
// the replies are read back: it reports the longest gap between two
// replies and the round trips' p99 and maximum. With --frr, the responder
// reads its state from FRR (--state-from frr:NAME), through a stand-in
// vtysh first in its PATH that prints generated outputs of that many LDP
// prefixes, a different label set at every reading: each refresh (every
// --refresh seconds, 3600 by default) is a changed state to load.
//
// Needs root. The frames are requests written by `lspping craft`, and
// deterministic mutations of them: malformed echo headers, wrong ports,
// transit TTLs, frames cut short. Some of those (unlabelled UDP to another
// port, frames cut before the UDP ports) never pass the raw socket's
// filter: the responder does not see them, and they are counted apart.
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <algorithm>
#include <atomic>
#include <map>

#include "GeneratedFrr.h"
#include "LoadSupport.h"
#include "MplsUtils/EthPktParser.h"
#include "Wirx/Nbo.h"
#include "tools/Pcap.h"

namespace {

using Bytes = std::vector<Orv::U8>;
using LspPingBench::Clock;

const std::string senderMac = "02:00:00:00:0e:01";
const std::string responderMac = "02:00:00:00:0f:01";

struct Template {
  std::string what;
  Bytes frame;
  // Whether the raw socket's filter lets it through to the responder.
  bool passes = true;
};

struct Options {
  unsigned long frames = 1000000;
  bool mixed = false;
  double gaps = 0;
  int frr = 0;
  double refresh = 3600;
  std::string lspping = LSPPING_PROGRAM;
};

std::string stateFile(const std::string &intf) {
  return R"({
  "bindings": { "ldp": [
    { "fec": "10.0.0.9/32", "labels": [ { "label": 3 } ] },
    { "fec": "10.0.0.8/32", "labels": [ { "label": 1000 } ] } ] },
  "lfib": {
    "routes": [ { "label": 1000, "viaSet": 1, "source": "ldp" } ],
    "viaSets": [ { "key": 1, "type": "mpls", "vias": [ 10 ] } ],
    "vias": [ { "key": 10, "interface": ")" +
         intf + R"(", "nexthop": "10.0.0.1",
                "action": "swap", "labels": [ 2000 ] } ] },
  "hardware": [ { "label": 1000, "state": "programmed" } ]
})";
}

Bytes crafted(const Options &o, const std::string &dir,
              const std::string &args) {
  const std::string file = dir + "/t.pcap";
  const std::string command = o.lspping + " craft --src 10.0.0.1 --src-mac " +
                              senderMac + " --dst-mac " + responderMac + " " +
                              args + " " + file;
  if (std::system(command.c_str()) != 0) {
    throw std::runtime_error("failed: " + command);
  }
  LspPingTool::PcapReader reader(file);
  std::span<const std::uint8_t> frame;
  if (!reader.next(frame)) {
    throw std::runtime_error(reader.error());
  }
  return {frame.begin(), frame.end()};
}

// The offset of the echo header and of the UDP header in `frame`.
std::pair<std::size_t, std::size_t> offsets(const Bytes &frame) {
  const MplsUtils::EthPktParser parser(frame.data(), Orv::U32(frame.size()));
  return {parser.udpPayloadOffset(), parser.udpHdrOffset()};
}

Bytes mutated(Bytes frame, std::size_t at, Orv::U8 value) {
  frame[at] = value;
  return frame;
}

std::vector<Template> templates(const Options &o, const std::string &dir) {
  const Bytes egress = crafted(o, dir, "--fec ldp=10.0.0.9/32");
  const Bytes transit = crafted(o, dir,
                                "--fec ldp=10.0.0.8/32 --label 1000/ttl=1 "
                                "--ds-map 10.0.0.2 --ds-label 1000");
  std::vector<Template> all = {
      {"egress, repRouterEgress", egress},
      {"TTL 1 with a downstream mapping, labelSwitchedAtStackDep", transit},
      {"TTL 1, labelMappingMismatch",
       crafted(o, dir, "--fec ldp=10.0.0.9/32 --label 1000/ttl=1")},
      {"egress, noMappingForFec", crafted(o, dir, "--fec ldp=10.0.0.7/32")},
  };
  if (!o.mixed) {
    return all;
  }
  const auto [echo, udp] = offsets(egress);
  const auto [transitEcho, transitUdp] = offsets(transit);
  const std::vector<Template> more = {
      {"echo version 2", mutated(egress, echo + 1, 2)},
      {"an echo reply sent to 3503", mutated(transit, transitEcho + 4, 2)},
      {"reply mode: no reply", mutated(egress, echo + 5, 1)},
      {"TLV length beyond the frame", mutated(egress, echo + 34, 0xff)},
      {"labelled, to another UDP port", mutated(transit, transitUdp + 3, 7)},
      {"unlabelled, to another UDP port", mutated(egress, udp + 3, 7), false},
      {"labelled, MPLS TTL 9", mutated(transit, 17, 9)},
      {"cut in the echo header", Bytes(egress.begin(), egress.begin() + 50)},
      {"labelled, cut in half",
       Bytes(transit.begin(), transit.begin() + transit.size() / 2)},
      {"cut before the UDP ports", Bytes(egress.begin(), egress.begin() + 30),
       false},
  };
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

void pinTo(int cpu) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(cpu, &set);
  sched_setaffinity(0, sizeof set, &set);
}

// Sends `count` frames cycling through `templates`, in batches.
void sendFrames(int fd, const std::vector<Template> &templates,
                unsigned long count) {
  constexpr unsigned batch = 64;
  std::vector<iovec> iovs(batch);
  std::vector<mmsghdr> msgs(batch);
  unsigned long sent = 0;
  while (sent < count) {
    const unsigned n = unsigned(std::min<unsigned long>(batch, count - sent));
    for (unsigned i = 0; i < n; ++i) {
      const Bytes &frame = templates[(sent + i) % templates.size()].frame;
      iovs[i] = {const_cast<Orv::U8 *>(frame.data()), frame.size()};
      msgs[i] = {};
      msgs[i].msg_hdr.msg_iov = &iovs[i];
      msgs[i].msg_hdr.msg_iovlen = 1;
    }
    const int done = sendmmsg(fd, msgs.data(), n, 0);
    if (done < 0) {
      if (errno == ENOBUFS || errno == EAGAIN) {
        continue;
      }
      throw std::runtime_error(std::string("sendmmsg: ") +
                               std::strerror(errno));
    }
    sent += unsigned(done);
  }
}

struct Counters {
  unsigned long received = 0;
  unsigned long replied = 0;
  std::string line;
};

Counters counters(LspPingTest::NetnsProcess &responder) {
  responder.signal(SIGUSR1);
  Counters c;
  if (const auto line = responder.lineWith(1, "counters:")) {
    std::smatch m;
    if (std::regex_search(*line, m,
                          std::regex("received ([0-9]+), replied ([0-9]+)"))) {
      c.received = std::stoul(m[1]);
      c.replied = std::stoul(m[2]);
    }
    c.line = *line;
  }
  return c;
}

// vtysh's outputs for a transit router with `prefixes` LDP prefixes, in
// `dir`, one file per command; `shift` moves every local label.
void writeFrrOutputs(const std::string &dir, int prefixes, int shift) {
  const auto [bindings, routes] =
      LspPingBench::ldpOutputs(prefixes, shift, "10.0.0.3");
  std::filesystem::create_directories(dir);
  const std::map<std::string, std::string> files = {
      {"show_running-config", "mpls ldp\n"},
      {"show_interface_json", R"({"e2":{"mtu":1500}})"},
      {"show_ip_route_json", routes},
      {"show_ipv6_route_json", "{}"},
      {"show_mpls_table_json", "{}"},
      {"show_mpls_ldp_binding_json", bindings},
      {"show_mpls_ldp_discovery_detail_json",
       R"({"interfaces":{"e2":{"adjacencies":[)"
       R"({"lsrId":"10.0.0.3","sourceAddress":"10.0.0.3"}]}}})"},
  };
  for (const auto &[name, text] : files) {
    std::ofstream(dir + "/" + name) << text;
  }
}

// A vtysh that answers from `dir`/0 and `dir`/1 in turn, switching at each
// reading (which starts with the running configuration).
void writeVtysh(const std::string &dir) {
  const std::string path = dir + "/bin/vtysh";
  std::filesystem::create_directories(dir + "/bin");
  std::ofstream(path) << "#!/bin/sh\n"
                         "while [ $# -gt 0 ]; do\n"
                         "  [ \"$1\" = -c ] && command=\"$2\"; shift\n"
                         "done\n"
                         "turn=$(cat "
                      << dir
                      << "/turn)\n"
                         "if [ \"$command\" = \"show running-config\" ]; then\n"
                         "  turn=$((1 - turn)); echo $turn > "
                      << dir
                      << "/turn\n"
                         "fi\n"
                         "exec cat \""
                      << dir << "/$turn/$(echo \"$command\" | tr ' ' _)\"\n";
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  std::ofstream(dir + "/turn") << "0\n";
}

double percentile(std::vector<double> values, double p) {
  if (values.empty()) {
    return 0;
  }
  std::sort(values.begin(), values.end());
  return values[std::min(values.size() - 1,
                         std::size_t(p * double(values.size())))];
}

// Sends `frame` at a steady rate for `seconds`, its echo sequence number
// counting up, and reads the replies from `sink` meanwhile. Times are the
// kernel's (SO_TIMESTAMPNS, the real-time clock), so that how soon the
// reading thread runs does not count.
void measureGaps(int fd, int sink, Bytes frame, double seconds) {
  using RealClock = std::chrono::system_clock;
  const auto [echo, udp] = offsets(frame);
  // No UDP checksum: the sequence number changes in every frame.
  frame[udp + 6] = frame[udp + 7] = 0;
  constexpr double rate = 5000;
  const auto count = std::size_t(seconds * rate);
  std::vector<RealClock::time_point> sent(count);
  std::vector<std::pair<RealClock::time_point, std::uint32_t>> replies;
  replies.reserve(count);
  std::atomic<bool> sending = true;
  int one = 1;
  setsockopt(sink, SOL_SOCKET, SO_TIMESTAMPNS, &one, sizeof one);
  timeval limit{0, 100000};
  setsockopt(sink, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  std::thread reader([&] {
    Orv::U8 buffer[2048];
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timespec))];
    for (;;) {
      iovec iov{buffer, sizeof buffer};
      msghdr msg{};
      msg.msg_iov = &iov;
      msg.msg_iovlen = 1;
      msg.msg_control = control;
      msg.msg_controllen = sizeof control;
      const ssize_t n = recvmsg(sink, &msg, 0);
      const cmsghdr *c = n >= 16 ? CMSG_FIRSTHDR(&msg) : nullptr;
      if (c && c->cmsg_type == SCM_TIMESTAMPNS) {
        timespec at;
        std::memcpy(&at, CMSG_DATA(c), sizeof at);
        std::uint32_t seq;
        std::memcpy(&seq, buffer + 12, 4);
        replies.emplace_back(
            RealClock::time_point(
                std::chrono::duration_cast<RealClock::duration>(
                    std::chrono::seconds(at.tv_sec) +
                    std::chrono::nanoseconds(at.tv_nsec))),
            Wirx::netOrder32(seq));
      } else if (n < 0 && !sending) {
        break;
      }
    }
  });
  const auto start = Clock::now();
  for (std::size_t i = 0; i < count; ++i) {
    std::this_thread::sleep_until(
        start + std::chrono::duration_cast<Clock::duration>(
                    std::chrono::duration<double>(double(i) / rate)));
    const std::uint32_t seq = Wirx::netOrder32(std::uint32_t(i));
    std::memcpy(&frame[echo + 12], &seq, 4);
    sent[i] = RealClock::now();
    send(fd, frame.data(), frame.size(), 0);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  sending = false;
  reader.join();
  double gap = 0;
  std::vector<double> trips;
  for (std::size_t i = 0; i < replies.size(); ++i) {
    if (i > 0) {
      gap = std::max(gap, std::chrono::duration<double>(replies[i].first -
                                                        replies[i - 1].first)
                              .count());
    }
    if (replies[i].second < count) {
      trips.push_back(std::chrono::duration<double>(replies[i].first -
                                                    sent[replies[i].second])
                          .count());
    }
  }
  std::printf("requests:             %zu at %.0f per second, %zu replies\n",
              count, rate, replies.size());
  std::printf("longest reply gap:    %.2f ms\n", gap * 1e3);
  std::printf("round trip:           p50 %.3f ms, p99 %.3f ms, max %.2f ms\n",
              percentile(trips, 0.5) * 1e3, percentile(trips, 0.99) * 1e3,
              trips.empty()
                  ? 0.0
                  : *std::max_element(trips.begin(), trips.end()) * 1e3);
}

int run(const Options &o) {
  const LspPingBench::Testbed bed("ResponderLoad", senderMac, responderMac);
  if (!bed.ready()) {
    return 2;
  }
  const LspPingTest::Netns &sender = bed.a();
  const LspPingTest::Netns &router = bed.b();
  const std::string &sendIntf = bed.aIntf();
  const std::string &recvIntf = bed.bIntf();
  const std::string &dir = bed.dir();
  std::ofstream(dir + "/router.json") << stateFile(recvIntf);
  const std::vector<Template> frames = templates(o, dir);

  // The responder on one CPU, the sender on the other.
  std::vector<std::string> command = {"taskset", "-c", "1"};
  if (o.frr > 0) {
    writeFrrOutputs(dir + "/0", o.frr, 0);
    writeFrrOutputs(dir + "/1", o.frr, 500000);
    writeVtysh(dir);
    command.insert(command.end(),
                   {"env", "PATH=" + dir + "/bin:" + std::getenv("PATH")});
  }
  command.insert(command.end(), {o.lspping, "responder", "--rate", "0"});
  if (o.frr > 0) {
    command.insert(command.end(),
                   {"--state-from", "frr:load", "--state-refresh",
                    std::to_string(o.refresh)});
  } else {
    command.insert(command.end(), {"--state", dir + "/router.json"});
  }
  LspPingTest::NetnsProcess responder(router, command);
  if (!responder.lineWith(1, "answering on")) {
    std::cerr << "ResponderLoad: the responder did not start\n";
    return 2;
  }
  pinTo(0);
  int fd;
  // Replies land on a socket that is never read: without one, the sender's
  // kernel would answer each with an ICMP error, work the veth charges to
  // the responder's core.
  int sink;
  {
    const LspPingTest::NetnsScope in(sender);
    sink = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_port = Wirx::netOrder16(49152);
    bind(sink, reinterpret_cast<sockaddr *>(&local), sizeof local);
    fd = socket(AF_PACKET, SOCK_RAW, 0);
    int one = 1;
    setsockopt(fd, SOL_PACKET, PACKET_QDISC_BYPASS, &one, sizeof one);
    sockaddr_ll addr{};
    addr.sll_family = AF_PACKET;
    addr.sll_ifindex = int(if_nametoindex(sendIntf.c_str()));
    if (bind(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0) {
      std::cerr << "ResponderLoad: cannot bind the sender\n";
      return 2;
    }
  }
  if (o.gaps > 0) {
    measureGaps(fd, sink, frames[0].frame, o.gaps);
    responder.signal(SIGTERM);
    const auto final = responder.lineWith(1, "counters:");
    std::printf("final %s\nexit status %d\n",
                final ? final->c_str() : "counters missing",
                responder.exitStatus());
    close(fd);
    close(sink);
    return 0;
  }
  unsigned long expected = 0;
  for (unsigned long i = 0; i < o.frames; ++i) {
    expected += frames[i % frames.size()].passes ? 1 : 0;
  }
  const pid_t pid = responder.pid();
  const LspPingBench::Usage atStart = LspPingBench::usage(pid);
  const auto start = Clock::now();
  sendFrames(fd, frames, o.frames);
  const double sendSeconds =
      std::chrono::duration<double>(Clock::now() - start).count();
  // Done when every frame that passes the filter is counted, or when the
  // count stands still for a second (which would be a fault).
  Counters now;
  auto settled = Clock::now();
  for (unsigned long last = ~0ul; now.received < expected;) {
    now = counters(responder);
    if (now.received != last) {
      last = now.received;
      settled = Clock::now();
    } else if (Clock::now() - settled > std::chrono::seconds(1)) {
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  const double seconds = std::chrono::duration<double>(settled - start).count();
  const LspPingBench::Usage atEnd = LspPingBench::usage(pid);
  responder.signal(SIGTERM);
  const auto final = responder.lineWith(1, "counters:");
  const int status = responder.exitStatus();
  close(fd);
  close(sink);

  std::printf("frames sent:          %lu in %.2f s (%.0f per second), %zu "
              "kinds:\n",
              o.frames, sendSeconds, double(o.frames) / sendSeconds,
              frames.size());
  for (const Template &t : frames) {
    std::printf("  %s%s\n", t.what.c_str(),
                t.passes ? "" : " (stopped by the socket filter)");
  }
  std::printf("through the filter:   %lu expected, %lu counted\n", expected,
              now.received);
  std::printf("replies:              %lu in %.2f s: %.0f per second\n",
              now.replied, seconds, double(now.replied) / seconds);
  const double cpu = atEnd.cpu() - atStart.cpu();
  std::printf("responder CPU:        %.2f s, %.2f us per frame counted, "
              "%.2f us per reply\n",
              cpu, cpu * 1e6 / double(now.received),
              cpu * 1e6 / double(now.replied));
  std::printf("replies per CPU second: %.0f (the responder's user and system "
              "time, as on a core of its own)\n",
              double(now.replied) / cpu);
  std::printf("responder RSS:        %ld KiB at start, %ld KiB at end\n",
              atStart.rss, atEnd.rss);
  std::printf("final %s\nexit status %d\n",
              final ? final->c_str() : "counters missing", status);
  return now.received == expected && status == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
  Options o;
  CLI::App app{"lspping responder under load, in namespaces of its own",
               "ResponderLoad"};
  app.add_option("--frames", o.frames, "frames sent as fast as they go");
  app.add_option_function<std::string>(
         "--mix", [&o](const std::string &mix) { o.mixed = mix == "mixed"; },
         "valid: requests only; mixed: malformed frames among them")
      ->check(CLI::IsMember({"valid", "mixed"}));
  app.add_option("--lspping", o.lspping, "the program");
  app.add_option("--gaps", o.gaps,
                 "instead: seconds of steady requests, timing the gaps "
                 "between replies");
  app.add_option("--frr", o.frr,
                 "with --gaps: the state read from a stand-in vtysh of this "
                 "many LDP prefixes");
  app.add_option("--refresh", o.refresh,
                 "with --frr: seconds between two readings of it");
  return LspPingBench::mainOf(app, argc, argv, [&] { return run(o); });
}
