#include "tools/DemoCommand.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "Kiv/VirtualTime.h"
#include "Netsim/Network.h"
#include "Netsim/SessionHost.h"
#include "Netsim/TraceLab.h"
#include "Session/Format.h"
#include "Session/PingSession.h"
#include "Session/TraceDot.h"
#include "Session/TraceSession.h"
#include "tools/ExitStatus.h"

namespace LspPingTool {

namespace {

using Orv::U32;
using Orv::U8;
using Wirx::IpAddr;
using Wirx::MplsLabel;

constexpr double start = 1'800'000'000.0;
// Whole microseconds and exact in binary, so that the echo time stamps,
// which carry whole microseconds, measure it exactly.
constexpr double linkDelay = 1.0 / 64;
constexpr U32 requests = 5;
constexpr double timeout = 2.0;
constexpr U32 implicitNull = 3;
constexpr U8 traceTtlLimit = 8;
constexpr U32 treeDestinations = 16;

const Wirx::IntfId eth1("Ethernet1");
const Wirx::IntfId eth2("Ethernet2");
const IpAddr pe2Addr(0x0a000002);   // 10.0.0.2
const IpAddr farAddr(0x0a000003);   // 10.0.0.3, behind pe2: label 1000
const IpAddr otherAddr(0x0a000004); // 10.0.0.4, behind pe2: label 1001

Wirx::EthAddr mac(const char *text) { return *Wirx::EthAddr::fromString(text); }

// pe1's Ethernet1 is linked to pe2's Ethernet1. pe2 is the egress of its own
// address and swaps labels 1000 (10.0.0.3/32) and 1001 (10.0.0.4/32)
// towards its Ethernet2.
class PingLab {
public:
  PingLab() {
    pe1_.intfIs(eth1, mac("02:00:00:00:01:01"), IpAddr(0x0a010001), 30);
    pe2_.intfIs(eth1, mac("02:00:00:00:02:01"), IpAddr(0x0a010002), 30);
    pe2_.intfIs(eth2, mac("02:00:00:00:02:02"), IpAddr(0x0a020001), 30);
    network_.linkIs(pe1_, eth1, pe2_, eth1, linkDelay);
    const Netsim::ForwardingState &state = pe2_.forwardingState();
    state.ldpBindingIs(Wirx::IpGenPrefix(pe2Addr, 32), MplsLabel(implicitNull));
    state.ldpBindingIs(Wirx::IpGenPrefix(farAddr, 32), MplsLabel(1000));
    state.ldpBindingIs(Wirx::IpGenPrefix(otherAddr, 32), MplsLabel(1001));
    state.swapRouteIs(MplsLabel(1000), eth2, IpAddr(0x0a020002),
                      MplsLabel(2000));
    state.swapRouteIs(MplsLabel(1001), eth2, IpAddr(0x0a020002),
                      MplsLabel(2001));
  }

  // Pings `fec` from pe1 with one label, printing each reply as it comes
  // and the summary after the last one.
  void ping(U32 id, const IpAddr &fec, U32 label, U8 ttl, std::ostream &out) {
    Session::Target target;
    target.fec = Wirx::IpGenPrefix(fec, 32);
    target.labels = {MplsLabel(label)};
    target.intf = eth1;
    out << "LSP ping " << target.fec.stringValue() << " (LDP), label " << label
        << (label == implicitNull ? " (implicit null)" : "")
        << (ttl == 255 ? "" : ", TTL " + std::to_string(ttl)) << ", from "
        << pe1_.name() << " on " << eth1 << ":\n";
    Session::PingSession::Options options;
    options.count = requests;
    options.timeout = timeout;
    options.ttl = ttl;
    Session::PingSession::Events events;
    events.reply = [&out](const Session::Reply &reply) {
      out << Session::pingReplyText(reply) << "\n";
    };
    events.timeout = [&out](U32 seq) {
      out << Session::pingLostText(seq) << "\n";
    };
    events.done = [&out, &target](const Session::PingSession::Summary &s) {
      out << Session::pingSummary(target.fec.stringValue(), s);
    };
    Session::PingSession session(host_, id, target, options, events);
    time_.runFor((requests - 1) * options.interval + timeout);
  }

private:
  Orv::Ptr<Kiv::TimerWheel> wheel_ = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time_{wheel_, start};
  Netsim::Network network_{wheel_};
  Netsim::Router &pe1_ = network_.routerIs("pe1", IpAddr(0x0a000001));
  Netsim::Router &pe2_ = network_.routerIs("pe2", pe2Addr);
  Netsim::SessionHost host_{pe1_};
};

// Traces 10.0.0.5/32 from pe1 through the five routers of a TraceLab.
class TraceDemo {
public:
  // A trace along the path of 127.0.0.1, hop by hop as the replies come.
  void trace(std::ostream &out) {
    out << "LSP trace " << header(false) << "\n";
    Session::TraceSession::Events events;
    events.hop = [&out](const Session::Hop &hop) {
      out << Session::hopText(hop) << "\n";
    };
    bool done = false;
    events.done = [&out, &done](const Session::Trace &trace) {
      out << Session::traceSummary(trace, trace.target.fec.stringValue());
      done = true;
    };
    Session::TraceSession session(host_, 1, target(), options(false), events);
    runUntil(done);
  }

  // A tree trace, path by path once every branch has been followed; `dot`
  // gets it as a graph.
  void treeTrace(std::ostream &out, std::ostream *dot) {
    out << "LSP tree trace " << header(true) << "\n";
    Session::TraceSession::Events events;
    bool done = false;
    events.done = [&out, dot, &done](const Session::Trace &trace) {
      done = true;
      for (std::size_t i = 0; i < trace.paths.size(); ++i) {
        const Session::Path &path = trace.paths[i];
        out << "path " << i + 1 << " of " << trace.paths.size() << " ("
            << Session::destinationsText(path.destinations)
            << "): " << Session::endText(path) << "\n";
        for (const Session::Hop &hop : path.hops) {
          out << Session::hopText(hop) << "\n";
        }
      }
      out << Session::traceSummary(trace, trace.target.fec.stringValue());
      if (dot) {
        Session::writeDot(trace, *dot);
      }
    };
    Session::TraceSession session(host_, 2, target(), options(true), events);
    runUntil(done);
  }

private:
  void runUntil(const bool &done) {
    while (!done) {
      time_.runFor(timeout);
    }
  }

  static Session::Target target() {
    Session::Target target;
    target.fec = Netsim::TraceLab::fec();
    return target;
  }

  static Session::TraceSession::Options options(bool tree) {
    Session::TraceSession::Options options;
    options.maxTtl = traceTtlLimit;
    options.timeout = timeout;
    options.tree = tree;
    options.destinations = treeDestinations;
    return options;
  }

  std::string header(bool tree) const {
    const Session::IngressPath path = host_.ingressPath(target());
    std::string text = Netsim::TraceLab::fec().stringValue() +
                       " (LDP), label " + path.labels.at(0).stringValue() +
                       ", from " + lab_.pe1.name() + " on " + path.intf.name() +
                       ", ";
    if (tree) {
      text += std::to_string(treeDestinations) + " destinations 127.0.0.1-" +
              std::to_string(treeDestinations) + ", ";
    }
    return text + "TTL limit " + std::to_string(traceTtlLimit) + ", time-out " +
           std::to_string(int(timeout)) + " s:";
  }

  Orv::Ptr<Kiv::TimerWheel> wheel_ = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time_{wheel_, start};
  Netsim::Network network_{wheel_};
  Netsim::TraceLab lab_{network_, linkDelay};
  Netsim::SessionHost host_{lab_.pe1};
};

void runDemo(std::ostream &out, std::ostream *dot) {
  {
    PingLab lab;
    out << "Two routers in one process, on virtual time: pe1 Ethernet1 to pe2 "
           "Ethernet1, "
        << Session::msText(U32(linkDelay * 1e6)) << " ms each way.\n\n"
        << "A healthy LSP: pe2 is the egress of 10.0.0.2/32.\n";
    lab.ping(1, pe2Addr, implicitNull, 255, out);
    out << "\nA broken LSP: pe1 sends label 1001, but pe2 bound 10.0.0.3/32 to "
           "label 1000.\n";
    lab.ping(2, farAddr, 1001, 1, out);
  }
  TraceDemo demo;
  out << "\nFive routers, " << Session::msText(U32(linkDelay * 1e6))
      << " ms per link: pe1 10.0.0.1, p1 10.0.0.2, p2 10.0.0.3, p3 10.0.0.4, "
         "pe2 10.0.0.5.\n"
         "p1 spreads 10.0.0.5/32 over p2 and p3 (ECMP) by IP destination; both "
         "pop to pe2, its egress.\n"
         "The p3 branch is broken: p1 swaps to label 3006, but p3 bound "
         "10.0.0.5/32 to 3005.\n\n";
  demo.trace(out);
  out << "\n";
  demo.treeTrace(out, dot);
}

} // namespace

void addDemoCommand(CLI::App &app, int &status) {
  CLI::App *cmd = app.add_subcommand(
      "demo",
      "Run LSP pings and traces through in-process networks of routers that "
      "run the library's ping client and echo responder on virtual time: no "
      "root, no setup. Pings a healthy and a broken LSP between two routers "
      "(a line per reply, a summary per LSP), then traces an LSP through five "
      "routers with an ECMP split, one branch broken: a trace hop by hop, and "
      "a tree trace that follows every branch.");
  auto dotFile = std::make_shared<std::string>();
  cmd->add_option("--dot", *dotFile,
                  "Also write the tree trace as a Graphviz graph to FILE, for "
                  "`dot -Tsvg`; - writes it to standard output instead of the "
                  "report")
      ->type_name("FILE");
  cmd->callback([dotFile, &status] {
    if (dotFile->empty()) {
      runDemo(std::cout, nullptr);
    } else if (*dotFile == "-") {
      std::ostream discard(nullptr);
      runDemo(discard, &std::cout);
    } else {
      std::ofstream dot(*dotFile);
      if (!dot) {
        std::cerr << "lspping: " << *dotFile << ": " << std::strerror(errno)
                  << "\n";
        status = exitError;
        return;
      }
      runDemo(std::cout, &dot);
    }
    status = exitOk;
  });
}

} // namespace LspPingTool
