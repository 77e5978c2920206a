#include "tools/ReplyTap.h"

#include <cstring>

#include "LspPing/LspPingHdr.h"

namespace LspPingTool {

ReplyTap::ReplyTap(Orv::Ptr<Wirx::LinuxUdpPam> socket)
    : UdpPam(socket->name(), socket->port()), socket_(std::move(socket)) {
  replies_.reserve(Wirx::LinuxUdpPam::batchSize);
  socket_->txDoneIs([this](int errnum) {
    if (settled_ < replies_.size()) {
      replies_[settled_++].failure = errnum == 0 ? "" : socket_->error();
    }
  });
  writableCountInc(1);
}

ReplyTap::~ReplyTap() { socket_->txDoneIs(nullptr); }

void ReplyTap::txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) {
  Reply &reply = replies_.emplace_back();
  reply.to = txDstAddr();
  reply.toPort = txDstPort();
  // The responder writes the echo header first.
  if (pkt->frontBytes() >= sizeof(LspPing::LspPingHdr)) {
    LspPing::LspPingHdr hdr;
    std::memcpy(&hdr, pkt->data(), sizeof hdr);
    reply.returnCode = hdr.returnCode;
    reply.returnSubcode = hdr.returnSubcode;
  }
  socket_->txSrcAddrIs(txSrcAddr());
  socket_->txDstAddrIs(txDstAddr());
  socket_->txDstPortIs(txDstPort());
  socket_->txPktIs(pkt);
}

void ReplyTap::clear() {
  replies_.clear();
  settled_ = 0;
}

} // namespace LspPingTool
