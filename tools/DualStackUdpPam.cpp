#include "tools/DualStackUdpPam.h"

#include <utility>

#include "Orv/Clock.h"

namespace LspPingTool {

namespace {

// The kernel may give a port to one family that the other's sockets hold:
// the pair is opened anew, a few times.
constexpr int attempts = 8;
// Replies to many LSPs arrive steadily, but the loop may be late to read
// them: room for some 10,000 of them, rather than the system's default of
// a few hundred, before the kernel drops any.
constexpr int rxBufferBytes = 16 << 20;
// A timer pass may send a thousand requests: a readiness reads as many
// replies, rather than one batch.
constexpr Orv::U32 rxBatches = 32;

} // namespace

Orv::Ptr<DualStackUdpPam> DualStackUdpPam::open(Kiv::EventLoop &loop, bool ipv4,
                                                bool ipv6, std::string &error) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    Orv::Ptr<Wirx::LinuxUdpPam> v4;
    Orv::U16 port = 0;
    if (ipv4) {
      v4 = Wirx::LinuxUdpPam::open(loop, Wirx::AddrFamily::ipv4, 0, error);
      if (!v4) {
        return nullptr;
      }
      port = v4->port();
    }
    Orv::Ptr<Wirx::LinuxUdpPam> v6;
    if (ipv6) {
      v6 = Wirx::LinuxUdpPam::open(loop, Wirx::AddrFamily::ipv6, port, error);
      if (!v6) {
        continue;
      }
      port = v6->port();
    }
    return Orv::make<DualStackUdpPam>(loop, std::move(v4), std::move(v6), port);
  }
  return nullptr;
}

DualStackUdpPam::DualStackUdpPam(Kiv::EventLoop &loop,
                                 Orv::Ptr<Wirx::LinuxUdpPam> ipv4,
                                 Orv::Ptr<Wirx::LinuxUdpPam> ipv6,
                                 Orv::U16 port)
    : Wirx::UdpPam(Orv::Name("udp port " + std::to_string(port)), port),
      ipv4_(std::move(ipv4)), ipv6_(std::move(ipv6)),
      again_(loop.wheel(), [this] { handleReadable(); }) {
  for (const auto &socket : {ipv4_, ipv6_}) {
    if (socket) {
      socket->rxBufferIs(rxBufferBytes);
      socket->rxBatchesIs(rxBatches);
      watch(*socket, Wirx::Pam::readableCountAttr,
            [this] { handleReadable(); });
    }
  }
  writableCountInc(1);
}

void DualStackUdpPam::txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) {
  Wirx::LinuxUdpPam *socket = this->socket(txDstAddr().af()).get();
  if (!socket) {
    txErrorIs(EAFNOSUPPORT);
    return;
  }
  socket->txSrcAddrIs(txSrcAddr());
  socket->txDstAddrIs(txDstAddr());
  socket->txDstPortIs(txDstPort());
  socket->txPktIs(pkt);
}

void DualStackUdpPam::handleReadable() {
  readableCountInc(1);
  if (!leftOver_.pkt) {
    leftOver_ = take();
  }
  if (leftOver_.pkt) {
    again_.timeMinIs(Orv::now());
  }
}

void DualStackUdpPam::doGetRxPkt() {
  Taken next = leftOver_.pkt ? std::exchange(leftOver_, Taken()) : take();
  rxSrcIs(next.src, next.srcPort, next.dst);
  rxPktHolderIs(std::move(next.pkt));
}

DualStackUdpPam::Taken DualStackUdpPam::take() {
  for (const auto &socket : {ipv4_, ipv6_}) {
    if (socket) {
      if (Orv::Ptr<Wirx::Pkt> pkt = socket->rxPkt()) {
        return Taken{std::move(pkt), socket->rxSrcAddr(), socket->rxSrcPort(),
                     socket->rxDstAddr()};
      }
    }
  }
  return Taken();
}

} // namespace LspPingTool
