#include "Session/ReplyTap.h"

#include <utility>

#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingMsgType.h"

namespace Session {

ReplyTap::ReplyTap(Orv::Ptr<Wirx::UdpPam> module)
    : Wirx::UdpPam(module->name(), module->port()), module_(std::move(module)) {
  watch(*module_, Wirx::Pam::readableCountAttr, [this] {
    readableCountInc(module_->readableCount() - readableCount());
  });
  watch(*module_, Wirx::Pam::writableCountAttr, [this] {
    writableCountInc(module_->writableCount() - writableCount());
  });
  readableCountInc(module_->readableCount());
  writableCountInc(module_->writableCount());
}

void ReplyTap::txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) {
  module_->txSrcAddrIs(txSrcAddr());
  module_->txDstAddrIs(txDstAddr());
  module_->txDstPortIs(txDstPort());
  module_->txPktIs(pkt);
}

std::optional<Orv::U8> ReplyTap::returnSubcode(Orv::U32 senderHandle,
                                               Orv::U32 sequenceNumber) const {
  const Noted &noted = noted_[slot(senderHandle, sequenceNumber)];
  if (!noted.valid || noted.senderHandle != senderHandle ||
      noted.sequenceNumber != sequenceNumber) {
    return std::nullopt;
  }
  return noted.returnSubcode;
}

Orv::U32 ReplyTap::slot(Orv::U32 senderHandle, Orv::U32 sequenceNumber) {
  return (senderHandle * 0x9E3779B1u + sequenceNumber) % remembered;
}

void ReplyTap::doGetRxPkt() {
  Orv::Ptr<Wirx::Pkt> pkt = module_->rxPkt();
  rxSrcIs(module_->rxSrcAddr(), module_->rxSrcPort());
  if (pkt) {
    note(*pkt);
  }
  rxPktHolderIs(std::move(pkt));
}

// Anything shorter than an echo header, or not a reply, is left to the
// listener to drop.
void ReplyTap::note(const Wirx::Pkt &pkt) {
  if (pkt.frontBytes() < sizeof(LspPing::LspPingHdr)) {
    return;
  }
  const auto &hdr = *reinterpret_cast<const LspPing::LspPingHdr *>(pkt.data());
  if (hdr.messageType != Orv::U8(LspPing::LspPingMsgType::MplsEchoReply)) {
    return;
  }
  const Orv::U32 handle = hdr.senderHandle();
  const Orv::U32 seq = hdr.sequenceNumber();
  noted_[slot(handle, seq)] = Noted{handle, seq, hdr.returnSubcode, true};
}

} // namespace Session
