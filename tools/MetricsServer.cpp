#include "tools/MetricsServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

#include "Orv/Clock.h"
#include "tools/MetricsText.h"

namespace LspPingTool {

namespace {

// A request line and the headers Prometheus sends fit many times over.
constexpr std::size_t maxRequest = 8192;
constexpr std::size_t maxConnections = 32;
// A client that does not send its request in this time is gone or slow on
// purpose; one that does not read its answer in the other is as bad.
constexpr double requestTimeout = 5.0;
constexpr double answerTimeout = 30.0;

std::string errnoText(const std::string &what) {
  return what + ": " + std::strerror(errno);
}

std::string response(std::string_view status, std::string_view type,
                     const std::string &body, bool head) {
  std::string text = "HTTP/1.1 ";
  text.append(status)
      .append("\r\nContent-Type: ")
      .append(type)
      .append("\r\nContent-Length: ")
      .append(std::to_string(body.size()))
      .append("\r\nConnection: close\r\n\r\n");
  if (!head) {
    text += body;
  }
  return text;
}

} // namespace

std::optional<ListenAddress> listenAddressOf(const std::string &text,
                                             std::string &error) {
  const std::size_t colon = text.rfind(':');
  error = "--metrics " + text + ": ";
  if (colon == std::string::npos) {
    error += "expected ADDR:PORT";
    return std::nullopt;
  }
  std::string host = text.substr(0, colon);
  const std::string portText = text.substr(colon + 1);
  unsigned port = 0;
  const auto [end, ec] =
      std::from_chars(portText.data(), portText.data() + portText.size(), port);
  if (portText.empty() || ec != std::errc() ||
      end != portText.data() + portText.size() || port > 65535) {
    error += "'" + portText + "' is not a port";
    return std::nullopt;
  }
  ListenAddress address;
  if (host.size() >= 2 && host.front() == '[' && host.back() == ']') {
    host = host.substr(1, host.size() - 2);
    auto *in6 = reinterpret_cast<sockaddr_in6 *>(&address.addr);
    if (inet_pton(AF_INET6, host.c_str(), &in6->sin6_addr) == 1) {
      in6->sin6_family = AF_INET6;
      in6->sin6_port = htons(Orv::U16(port));
      address.length = sizeof(sockaddr_in6);
      error.clear();
      return address;
    }
  } else {
    auto *in = reinterpret_cast<sockaddr_in *>(&address.addr);
    if (inet_pton(AF_INET, host.c_str(), &in->sin_addr) == 1) {
      in->sin_family = AF_INET;
      in->sin_port = htons(Orv::U16(port));
      address.length = sizeof(sockaddr_in);
      error.clear();
      return address;
    }
  }
  error += "'" + host + "' is not an IPv4 address or a [bracketed] IPv6 one";
  return std::nullopt;
}

struct MetricsServer::Connection {
  Connection(Kiv::TimerWheel &wheel, std::function<void()> onDeadline)
      : deadline(wheel, std::move(onDeadline)) {}

  std::string in;
  std::string out;
  std::size_t sent = 0;
  Kiv::Timer deadline;
};

std::unique_ptr<MetricsServer> MetricsServer::open(Kiv::EventLoop &loop,
                                                   const ListenAddress &address,
                                                   Metrics metrics, Log log,
                                                   std::string &error) {
  const int fd = socket(address.addr.ss_family,
                        SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    error = errnoText("--metrics: socket");
    return nullptr;
  }
  const int one = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  if (bind(fd, reinterpret_cast<const sockaddr *>(&address.addr),
           address.length) != 0 ||
      listen(fd, 64) != 0) {
    error = errnoText("--metrics: cannot listen");
    ::close(fd);
    return nullptr;
  }
  std::unique_ptr<MetricsServer> server(
      new MetricsServer(loop, fd, std::move(metrics), std::move(log)));
  sockaddr_storage bound{};
  socklen_t length = sizeof bound;
  getsockname(fd, reinterpret_cast<sockaddr *>(&bound), &length);
  server->port_ =
      ntohs(bound.ss_family == AF_INET6
                ? reinterpret_cast<const sockaddr_in6 *>(&bound)->sin6_port
                : reinterpret_cast<const sockaddr_in *>(&bound)->sin_port);
  loop.fdReadableIs(fd, [s = server.get()] { s->handleAccept(); });
  return server;
}

MetricsServer::MetricsServer(Kiv::EventLoop &loop, int fd, Metrics metrics,
                             Log log)
    : loop_(loop), fd_(fd), metrics_(std::move(metrics)), log_(std::move(log)) {
}

MetricsServer::~MetricsServer() {
  while (!connections_.empty()) {
    close(connections_.begin()->first);
  }
  loop_.fdDel(fd_);
  ::close(fd_);
}

void MetricsServer::handleAccept() {
  for (;;) {
    const int fd = accept4(fd_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
      if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR &&
          errno != ECONNABORTED) {
        log_(errnoText("metrics: accept"));
      }
      return;
    }
    if (connections_.size() >= maxConnections) {
      ::close(fd);
      continue;
    }
    auto connection =
        std::make_unique<Connection>(loop_.wheel(), [this, fd] { close(fd); });
    connection->deadline.timeMinIs(Orv::now() + requestTimeout);
    connections_.emplace(fd, std::move(connection));
    loop_.fdReadableIs(fd, [this, fd] { handleReadable(fd); });
  }
}

void MetricsServer::handleReadable(int fd) {
  Connection &connection = *connections_.at(fd);
  char buffer[2048];
  const ssize_t n = read(fd, buffer, sizeof buffer);
  if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  if (n <= 0) {
    close(fd);
    return;
  }
  connection.in.append(buffer, std::size_t(n));
  const bool complete = connection.in.find("\r\n\r\n") != std::string::npos ||
                        connection.in.find("\n\n") != std::string::npos;
  if (complete) {
    answer(connection);
    connection.deadline.timeMinIs(Orv::now() + answerTimeout);
    loop_.fdWritableIs(fd, [this, fd] { handleWritable(fd); });
  } else if (connection.in.size() > maxRequest) {
    close(fd);
  }
}

// The request line, "METHOD TARGET VERSION", decides; headers are not read.
void MetricsServer::answer(Connection &connection) {
  const std::string_view in = connection.in;
  const std::string_view line = in.substr(0, in.find_first_of("\r\n"));
  const std::size_t space = line.find(' ');
  const std::string_view method = line.substr(0, space);
  std::string_view target =
      space == std::string_view::npos ? "" : line.substr(space + 1);
  target = target.substr(0, target.find(' '));
  target = target.substr(0, target.find('?'));
  const bool head = method == "HEAD";
  constexpr std::string_view plain = "text/plain; charset=utf-8";
  if (method != "GET" && !head) {
    connection.out =
        response("405 Method Not Allowed", plain, "GET /metrics only\n", head);
  } else if (target != "/metrics") {
    connection.out =
        response("404 Not Found", plain, "metrics are at /metrics\n", head);
  } else {
    connection.out =
        response("200 OK", MetricsText::contentType, metrics_(), head);
  }
  connection.in.clear();
}

void MetricsServer::handleWritable(int fd) {
  Connection &connection = *connections_.at(fd);
  while (connection.sent < connection.out.size()) {
    const ssize_t n =
        send(fd, connection.out.data() + connection.sent,
             connection.out.size() - connection.sent, MSG_NOSIGNAL);
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
      return;
    }
    if (n <= 0) {
      close(fd);
      return;
    }
    connection.sent += std::size_t(n);
  }
  // The client closes once it has read the answer: closing first, with
  // bytes of its own unread here, could reset the connection and lose the
  // answer's end.
  connection.out = std::string();
  shutdown(fd, SHUT_WR);
  loop_.fdReadableIs(fd, [this, fd] { handleClosing(fd); });
}

void MetricsServer::handleClosing(int fd) {
  char buffer[512];
  const ssize_t n = read(fd, buffer, sizeof buffer);
  if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  close(fd);
}

void MetricsServer::close(int fd) {
  loop_.fdDel(fd);
  ::close(fd);
  connections_.erase(fd);
}

} // namespace LspPingTool
