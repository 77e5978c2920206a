// lspping monitor's parts: LSPs watched through the in-process network,
// their exposition checked by promtool, the /metrics server over real
// sockets on loopback, and the configuration's mistakes.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "Kiv/VirtualTime.h"
#include "Netsim/SessionHost.h"
#include "Netsim/TraceLab.h"
#include "RunProgram.h"
#include "tools/LspMonitor.h"
#include "tools/MetricsServer.h"
#include "tools/MonitorConfig.h"

namespace {

using LspPingTool::LspMonitor;
using LspPingTool::MonitorEvent;

const Wirx::IntfId eth3("Ethernet3");

// promtool's verdict on an exposition: its exit status and what it said;
// empty when promtool is missing and CI does not require it.
std::optional<LspPingTest::ProgramRun> promtool(const std::string &text) {
  if (LspPingTest::runCommand("command -v promtool").status != 0) {
    if (const char *required = std::getenv("LSPPING_REQUIRE_LAB");
        required && std::string(required) == "1") {
      ADD_FAILURE() << "LSPPING_REQUIRE_LAB=1 but promtool is not installed";
    }
    return std::nullopt;
  }
  const auto path = std::filesystem::temp_directory_path() /
                    ("lspping-metrics-" + std::to_string(getpid()));
  std::ofstream(path) << text;
  auto run = LspPingTest::runCommand("promtool check metrics < '" +
                                     path.string() + "' 2>&1");
  std::filesystem::remove(path);
  return run;
}

// pe1 of the trace lab watches 10.0.0.5/32, on virtual time.
struct Net {
  LspPingTool::MonitoredLsp lsp(const std::string &name, bool trace) const {
    LspPingTool::MonitoredLsp lsp;
    lsp.name = name;
    lsp.lsp.fec = "ldp=10.0.0.5/32";
    lsp.lsp.target.fec = Netsim::TraceLab::fec();
    lsp.trace = trace;
    lsp.window = trace ? 1 : 3;
    lsp.lossThreshold = 0;
    lsp.maxTtl = 8;
    return lsp;
  }
  std::unique_ptr<LspMonitor> watch(const std::string &name, bool trace,
                                    Orv::U32 clientId) {
    return std::make_unique<LspMonitor>(
        host, clientId, lsp(name, trace), time.now(),
        [this](const MonitorEvent &event) { events.push_back(event.text()); });
  }
  std::string metrics(const std::vector<const LspMonitor *> &monitors) {
    LspPingTool::MetricsText text;
    LspMonitor::writeMetrics(text, monitors);
    return text.take();
  }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, 1'800'000'000.0};
  Netsim::Network network{wheel};
  Netsim::TraceLab lab{network, 1.0 / 64};
  Netsim::SessionHost host{lab.pe1};
  std::vector<std::string> events;
};

TEST(LspMonitor, StateChangesAndPathChangesAreEventsAndMetrics) {
  Net net;
  const auto ping = net.watch("pe2-ping", false, 1);
  const auto trace = net.watch("pe2-trace", true, 2);
  net.time.runFor(3.5);
  // p1 now sends the LSP down the p3 branch, whose label p3 bound to
  // another FEC.
  net.lab.p1.forwardingState().swapRouteIs(Wirx::MplsLabel(1005), eth3,
                                           Wirx::IpAddr(0x0a000004),
                                           Wirx::MplsLabel(3006));
  net.time.runFor(1);
  net.lab.pe1p1.upIs(false);
  net.time.runFor(10);
  EXPECT_EQ(
      net.events,
      (std::vector<std::string>{
          "lsp pe2-trace up (0 of 1 traces failed)",
          "lsp pe2-ping up (0 of 3 requests failed)",
          "lsp pe2-trace path changed at hop 1: 10.0.0.2 [2005] -> 10.0.0.2 "
          "[3006]",
          "lsp pe2-trace down: labelMappingMismatch (code 10, subcode 1) from "
          "10.0.0.4 at hop 2 (1 of 1 traces failed)",
          "lsp pe2-ping down: no reply within 2 s (1 of 3 requests failed)",
          "lsp pe2-trace path changed at hop 1: 10.0.0.2 [3006] -> *",
      }));
  EXPECT_EQ(ping->up(), false);

  const std::string text = net.metrics({ping.get(), trace.get()});
  for (const std::string line :
       {"lspping_lsp_up{lsp=\"pe2-ping\"} 0\n",
        "lspping_lsp_last_return_code{lsp=\"pe2-ping\"} 3\n",
        "lspping_lsp_path_changes_total{lsp=\"pe2-trace\"} 2\n",
        "lspping_lsp_rtt_seconds_bucket{lsp=\"pe2-ping\",le=\"0.1\"} 5\n",
        "lspping_lsp_replies_total{lsp=\"pe2-trace\",code="
        "\"labelMappingMismatch\"} 1\n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
  }
  if (const auto verdict = promtool(text)) {
    EXPECT_EQ(verdict->status, 0) << verdict->output;
  }
}

TEST(MetricsText, FamiliesSamplesAndEscapedLabels) {
  LspPingTool::MetricsText text;
  text.family("lspping_x_seconds", "histogram", "A help with a \\ and\nline.");
  const std::vector<double> bounds = {0.001, 0.5};
  const std::vector<Orv::U64> counts = {1, 0, 2};
  text.histogram("lspping_x_seconds", {{"lsp", "a\"b\\c\nd"}}, bounds, counts,
                 1.25);
  text.family("lspping_y_total", "counter", "Y.");
  text.sample("lspping_y_total", {}, Orv::U64(7));
  EXPECT_EQ(text.text(),
            "# HELP lspping_x_seconds A help with a \\\\ and\\nline.\n"
            "# TYPE lspping_x_seconds histogram\n"
            "lspping_x_seconds_bucket{lsp=\"a\\\"b\\\\c\\nd\",le=\"0.001\"} 1\n"
            "lspping_x_seconds_bucket{lsp=\"a\\\"b\\\\c\\nd\",le=\"0.5\"} 1\n"
            "lspping_x_seconds_bucket{lsp=\"a\\\"b\\\\c\\nd\",le=\"+Inf\"} 3\n"
            "lspping_x_seconds_sum{lsp=\"a\\\"b\\\\c\\nd\"} 1.25\n"
            "lspping_x_seconds_count{lsp=\"a\\\"b\\\\c\\nd\"} 3\n"
            "# HELP lspping_y_total Y.\n"
            "# TYPE lspping_y_total counter\n"
            "lspping_y_total 7\n");
  if (const auto verdict = promtool(text.text())) {
    EXPECT_EQ(verdict->status, 0) << verdict->output;
  }
}

// A client on loopback, non-blocking, so that the test's one thread can
// run the server's loop between its reads.
struct Client {
  Client(Orv::U16 port) : fd(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr), 0);
  }
  ~Client() { close(fd); }
  void send(const std::string &text) const {
    EXPECT_EQ(::send(fd, text.data(), text.size(), MSG_NOSIGNAL),
              ssize_t(text.size()));
  }
  // What the server sent until it closed, the loop run in between; stops
  // after `turns` turns of the loop.
  std::string answer(Kiv::EventLoop &loop, int turns = 2000) const {
    std::string text;
    for (int i = 0; i < turns; ++i) {
      loop.runOnce(0.01);
      char buffer[65536];
      ssize_t n;
      while ((n = recv(fd, buffer, sizeof buffer, MSG_DONTWAIT)) > 0) {
        text.append(buffer, std::size_t(n));
      }
      if (n == 0 || (n < 0 && errno != EAGAIN)) {
        return text;
      }
    }
    return text + "(still open)";
  }
  int fd;
};

TEST(MetricsServer, AnswersScrapesAndClosesWhatIsNotOne) {
  Kiv::EventLoop loop;
  std::string error;
  const auto address = LspPingTool::listenAddressOf("127.0.0.1:0", error);
  ASSERT_TRUE(address) << error;
  // Larger than a socket's buffers: the answer goes out as the client
  // reads it.
  const std::string metrics(3 << 20, 'm');
  std::vector<std::string> logged;
  const auto server = LspPingTool::MetricsServer::open(
      loop, *address, [&] { return metrics; },
      [&](const std::string &line) { logged.push_back(line); }, error);
  ASSERT_TRUE(server) << error;
  const Orv::U16 port = server->port();

  struct Case {
    std::string request;
    std::string statusLine;
  };
  for (const Case &c : std::vector<Case>{
           {"GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n", "HTTP/1.1 200 OK"},
           {"GET /metrics?x=1 HTTP/1.0\n\n", "HTTP/1.1 200 OK"},
           {"GET / HTTP/1.1\r\n\r\n", "HTTP/1.1 404 Not Found"},
           {"POST /metrics HTTP/1.1\r\n\r\n",
            "HTTP/1.1 405 Method Not Allowed"},
           {"HEAD /metrics HTTP/1.1\r\n\r\n", "HTTP/1.1 200 OK"},
       }) {
    Client client(port);
    client.send(c.request);
    const std::string answer = client.answer(loop);
    EXPECT_EQ(answer.substr(0, answer.find("\r\n")), c.statusLine) << c.request;
    const std::string body = answer.substr(answer.find("\r\n\r\n") + 4);
    if (c.statusLine.ends_with("OK") && c.request.starts_with("GET")) {
      EXPECT_EQ(body, metrics);
      EXPECT_NE(answer.find("Content-Type: text/plain; version=0.0.4"),
                std::string::npos);
    } else if (c.request.starts_with("HEAD")) {
      EXPECT_EQ(body, "");
    }
  }

  // A request that does not end within the buffer is closed at once; so
  // is one connection beyond the few dozen; one that sends nothing is
  // closed at its deadline.
  Client oversized(port);
  oversized.send("GET /" + std::string(9000, 'a'));
  EXPECT_EQ(oversized.answer(loop), "");
  std::vector<std::unique_ptr<Client>> idle;
  for (int i = 0; i < 33; ++i) {
    idle.push_back(std::make_unique<Client>(port));
  }
  EXPECT_EQ(idle.back()->answer(loop, 50), "");
  EXPECT_EQ(idle.front()->answer(loop), "");
  EXPECT_TRUE(logged.empty());
}

TEST(MonitorConfig, ReadsEntriesWithTheDefaultsOfTheTopLevel) {
  std::string error;
  const auto lsps = LspPingTool::monitorConfigOf(
      R"({"interval": 0.5, "window": 4, "interface": "e1",
          "nexthop-mac": "02:00:00:00:00:02",
          "lsps": [
            {"name": "a", "fec": "ldp 10.0.0.9/32 --label 1004"},
            {"name": "b", "fec": "sr 2001:db8::9/128 --label 16009",
             "mode": "trace", "interval": 30, "loss-threshold": 50}]})",
      "m.json", error);
  ASSERT_TRUE(lsps) << error;
  ASSERT_EQ(lsps->size(), 2u);
  const auto &a = (*lsps)[0];
  const auto &b = (*lsps)[1];
  EXPECT_EQ(a.lsp.fec, "ldp=10.0.0.9/32");
  EXPECT_EQ(a.lsp.target.intf, Wirx::IntfId("e1"));
  EXPECT_EQ(a.lsp.target.labels.size(), 1u);
  EXPECT_FALSE(a.trace);
  EXPECT_EQ(a.interval, 0.5);
  EXPECT_EQ(a.window, 4u);
  EXPECT_EQ(a.timeout, 2.0);
  EXPECT_TRUE(b.trace);
  EXPECT_EQ(b.interval, 30.0);
  EXPECT_EQ(b.lossThreshold, 50.0);
  EXPECT_NE(a.definitionHash, b.definitionHash);
}

TEST(MonitorConfig, MistakesAreNamedWithTheirPlace) {
  const std::string lsp = R"({"name": "a", "fec": "ldp 10.0.0.9/32")";
  struct Case {
    std::string text;
    std::string error;
  };
  for (
      const Case &c : std::vector<Case>{
          {"{\"lsps\": [\n}", "m.json:2:1: not JSON"},
          {"[]", "m.json: expected an object"},
          {"{}", "m.json: missing key 'lsps'"},
          {R"({"lsps": [], "colour": 1})",
           "m.json: /colour: unknown key (expected lsps, mode,"},
          {R"({"lsps": [)" + lsp + R"(, "colour": 1}]})",
           "m.json: /lsps/0/colour: unknown key (expected name, fec,"},
          {R"({"lsps": [{"fec": "ldp 10.0.0.9/32"}]})",
           "m.json: /lsps/0: missing key 'name'"},
          {R"({"lsps": [{"name": "a b", "fec": "ldp 10.0.0.9/32"}]})",
           "m.json: /lsps/0/name: 'a b' is not a name"},
          {R"({"lsps": [)" + lsp + "}, " + lsp + "}]}",
           "m.json: /lsps/1/name: 'a' names another LSP already"},
          {R"({"mode": "pong", "lsps": [)" + lsp + "}]}",
           "m.json: /mode: 'pong' is not ping or trace"},
          {R"({"lsps": [)" + lsp + R"(, "interval": 0}]})",
           "m.json: /lsps/0/interval: 0 is not a number of seconds above 0"},
          {R"({"lsps": [)" + lsp + R"(, "window": 2.5}]})",
           "m.json: /lsps/0/window: expected a whole number"},
          {R"({"loss-threshold": 101, "lsps": [)" + lsp + "}]}",
           "m.json: /loss-threshold: 101 is not a percentage"},
          {R"({"lsps": [{"name": "a", "fec": "ldp 10.0.0.9/33"}]})",
           "m.json: /lsps/0/fec: "},
          {R"({"lsps": [{"name": "a", "mode": "trace", "fec": "ldp 10.0.0.9/32 --label 5/ttl=1"}]})",
           "m.json: /lsps/0/fec: --label: a trace sets the labels' TTL"},
      }) {
    std::string error;
    EXPECT_FALSE(LspPingTool::monitorConfigOf(c.text, "m.json", error))
        << c.text;
    EXPECT_EQ(error.substr(0, c.error.size()), c.error) << c.text;
    EXPECT_EQ(error.find('\n'), std::string::npos);
  }
}

} // namespace
