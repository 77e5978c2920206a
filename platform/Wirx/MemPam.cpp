#include "Wirx/MemPam.h"

#include <utility>

namespace Wirx {

MemPam::MemPam(const Orv::Name &name, std::size_t frameLimit)
    : Pam(name), frameLimit_(frameLimit) {
  writableCountInc(1);
}

void MemPam::txPktIs(const Orv::Ptr<Pkt> &pkt) {
  if (frames_.size() >= frameLimit_) {
    full_ = true;
    txDropsInc();
    return;
  }
  frames_.emplace_back(pkt->data(), pkt->data() + pkt->frontBytes());
}

void MemPam::clear() {
  frames_.clear();
  if (full_ && frameLimit_ > 0) {
    full_ = false;
    writableCountInc(1);
  }
}

void MemPam::rxPktIs(Orv::Ptr<Pkt> pkt) {
  rxQueue_.push_back(std::move(pkt));
  readableCountInc(1);
}

void MemPam::doGetRxPkt() {
  if (rxQueue_.empty()) {
    return;
  }
  rxPktHolderIs(std::move(rxQueue_.front()));
  rxQueue_.pop_front();
}

} // namespace Wirx
