#include "tools/ReplyTap.h"

#include <cstring>

#include "LspPing/LspPingHdr.h"

namespace LspPingTool {

ReplyTap::ReplyTap(Orv::Ptr<Wirx::LinuxUdpPam> socket)
    : UdpPam(socket->name(), socket->port()), socket_(std::move(socket)) {
  writableCountInc(1);
}

void ReplyTap::txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) {
  Reply reply;
  reply.to = txDstAddr();
  reply.toPort = txDstPort();
  // The responder writes the echo header first.
  if (pkt->frontBytes() >= sizeof(LspPing::LspPingHdr)) {
    LspPing::LspPingHdr hdr;
    std::memcpy(&hdr, pkt->data(), sizeof hdr);
    reply.returnCode = hdr.returnCode;
    reply.returnSubcode = hdr.returnSubcode;
  }
  const Orv::U32 failuresBefore = socket_->txErrors() + socket_->txDrops();
  socket_->txSrcAddrIs(txSrcAddr());
  socket_->txDstAddrIs(txDstAddr());
  socket_->txDstPortIs(txDstPort());
  socket_->txPktIs(pkt);
  if (socket_->txErrors() + socket_->txDrops() != failuresBefore) {
    reply.failure = socket_->error();
  }
  reply_ = std::move(reply);
}

} // namespace LspPingTool
