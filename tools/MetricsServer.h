#pragma once

#include <sys/socket.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Kiv/EventLoop.h"
#include "Orv/Types.h"

namespace LspPingTool {

// Where `--metrics` listens: "ADDR:PORT", "[IPV6]:PORT".
struct ListenAddress {
  sockaddr_storage addr{};
  socklen_t length = 0;
};
// The address `text` names; empty, with a one-line `error`, when it names
// none.
std::optional<ListenAddress> listenAddressOf(const std::string &text,
                                             std::string &error);

// The few lines of HTTP that Prometheus scrapes metrics with, served on
// the daemon's event loop: GET (or HEAD) /metrics is answered with what
// `metrics` returns, any other path with 404, any other method with 405;
// one request per connection, closed after the answer. A connection that
// has not sent its request within a few seconds, whose request does not
// fit a small buffer, or that does not take its answer within half a
// minute is closed; so are connections beyond a few dozen at once. Nothing
// blocks and nothing throws: a failing socket is logged and closed.
class MetricsServer {
public:
  using Metrics = std::function<std::string()>;
  using Log = std::function<void(const std::string &)>;

  // Listens on `address`; null, with `error` naming the address, when it
  // cannot.
  static std::unique_ptr<MetricsServer> open(Kiv::EventLoop &loop,
                                             const ListenAddress &address,
                                             Metrics metrics, Log log,
                                             std::string &error);
  MetricsServer(const MetricsServer &) = delete;
  MetricsServer &operator=(const MetricsServer &) = delete;
  ~MetricsServer();

  // The port listened on: the one asked for, or the kernel's choice for 0.
  Orv::U16 port() const { return port_; }

private:
  struct Connection;

  MetricsServer(Kiv::EventLoop &loop, int fd, Metrics metrics, Log log);
  void handleAccept();
  void handleReadable(int fd);
  void answer(Connection &connection);
  void handleWritable(int fd);
  void handleClosing(int fd);
  void close(int fd);

  Kiv::EventLoop &loop_;
  const int fd_;
  Orv::U16 port_ = 0;
  Metrics metrics_;
  Log log_;
  std::map<int, std::unique_ptr<Connection>> connections_;
};

} // namespace LspPingTool
