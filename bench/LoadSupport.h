// What the programs that load `lspping` in namespaces share: a scratch
// directory, two namespaces joined by a veth pair, a process's CPU time
// and memory, the FECs of many LSPs and a state that binds them.
#pragma once

#include <unistd.h>

#include <CLI/CLI.hpp>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "Netns.h"

namespace LspPingBench {

using Clock = std::chrono::steady_clock;

inline double since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// A directory of the run's files under /tmp, removed at the end.
class ScratchDir {
public:
  explicit ScratchDir(const std::string &program)
      : path_("/tmp/" + program + "." + std::to_string(getpid())) {
    std::filesystem::create_directories(path_);
  }
  ScratchDir(const ScratchDir &) = delete;
  ScratchDir &operator=(const ScratchDir &) = delete;
  ~ScratchDir() { std::filesystem::remove_all(path_); }

  const std::string &path() const { return path_; }

private:
  std::string path_;
};

// `a`'s `aIntf` (10.0.0.1/24) and `b`'s `bIntf` (10.0.0.2/24), a veth pair,
// up, without checksum offload (raw frames carry their own); `a`'s
// loopback up too. `extra` adds to the `ip link add` command (addresses).
inline bool joinByVeth(const LspPingTest::Netns &a, const std::string &aIntf,
                       const LspPingTest::Netns &b, const std::string &bIntf,
                       const std::string &aMac = "",
                       const std::string &bMac = "") {
  std::vector<std::string> add = {"link", "add", aIntf};
  if (!aMac.empty()) {
    add.insert(add.end(), {"address", aMac});
  }
  add.insert(add.end(), {"type", "veth", "peer", "name", bIntf});
  if (!bMac.empty()) {
    add.insert(add.end(), {"address", bMac});
  }
  add.insert(add.end(), {"netns", b.name()});
  return a.ip(add) && a.ip({"addr", "add", "10.0.0.1/24", "dev", aIntf}) &&
         b.ip({"addr", "add", "10.0.0.2/24", "dev", bIntf}) &&
         a.ip({"link", "set", aIntf, "up"}) &&
         a.ip({"link", "set", "lo", "up"}) &&
         b.ip({"link", "set", bIntf, "up"}) &&
         a.exec({"ethtool", "-K", aIntf, "tx", "off"}) &&
         b.exec({"ethtool", "-K", bIntf, "tx", "off"});
}

// What each load program stands on: two namespaces of its own joined by a
// veth pair (joinByVeth), `a` the one that loads the other, and a scratch
// directory. Says on standard error, naming the program, why when they
// cannot be set up.
class Testbed {
public:
  explicit Testbed(const std::string &program, const std::string &aMac = "",
                   const std::string &bMac = "")
      : why_(LspPingTest::netnsUnavailable()), scratch_(program) {
    if (why_.empty() && !joinByVeth(a_, aIntf_, b_, bIntf_, aMac, bMac)) {
      why_ = "cannot set up the namespaces";
    }
    if (!why_.empty()) {
      std::cerr << program << ": " << why_ << "\n";
    }
  }

  bool ready() const { return why_.empty(); }
  const LspPingTest::Netns &a() const { return a_; }
  const LspPingTest::Netns &b() const { return b_; }
  const std::string &aIntf() const { return aIntf_; }
  const std::string &bIntf() const { return bIntf_; }
  const std::string &dir() const { return scratch_.path(); }

private:
  std::string why_;
  const LspPingTest::Netns a_;
  const LspPingTest::Netns b_;
  const std::string aIntf_ = LspPingTest::uniqueName("la");
  const std::string bIntf_ = LspPingTest::uniqueName("lb");
  const ScratchDir scratch_;
};

struct Usage {
  // CPU seconds in user space and in the kernel.
  double user = 0;
  double system = 0;
  // Resident memory, KiB.
  long rss = 0;

  double cpu() const { return user + system; }
};

inline Usage usage(pid_t pid) {
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  const std::string text((std::istreambuf_iterator<char>(stat)), {});
  std::istringstream fields(text.substr(text.rfind(')') + 2));
  std::string field;
  unsigned long utime = 0, stime = 0;
  for (int i = 3; i <= 15 && fields >> field; ++i) {
    if (i == 14) {
      utime = std::stoul(field);
    } else if (i == 15) {
      stime = std::stoul(field);
    }
  }
  long rss = 0;
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) {
      rss = std::stol(line.substr(6));
    }
  }
  const double tick = double(sysconf(_SC_CLK_TCK));
  return {double(utime) / tick, double(stime) / tick, rss};
}

// The FEC of LSP i: 10.128.0.0/9 and up, one /32 each.
inline std::string fec(unsigned long i) {
  const unsigned long addr = (10ul << 24 | 128ul << 16) + i;
  return std::to_string(addr >> 24) + "." + std::to_string(addr >> 16 & 255) +
         "." + std::to_string(addr >> 8 & 255) + "." +
         std::to_string(addr & 255) + "/32";
}

// A state file at `path` that binds the FECs of `lsps` LSPs, this router
// their egress.
inline void writeEgressState(const std::string &path, unsigned long lsps) {
  std::ofstream state(path);
  state << "{ \"bindings\": { \"ldp\": [\n";
  for (unsigned long i = 0; i < lsps; ++i) {
    state << (i ? ",\n" : "") << "  { \"fec\": \"" << fec(i)
          << "\", \"labels\": [ { \"label\": 3 } ] }";
  }
  state << "\n] } }\n";
}

// The program: its options read by `app` from the command line, then
// `run`; exit status 2 for a mistake on the command line or an error,
// which it names.
template <class Run> int mainOf(CLI::App &app, int argc, char **argv, Run run) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &e) {
    return app.exit(e) == 0 ? 0 : 2;
  }
  try {
    return run();
  } catch (const std::exception &e) {
    std::cerr << app.get_name() << ": " << e.what() << "\n";
    return 2;
  }
}

} // namespace LspPingBench
