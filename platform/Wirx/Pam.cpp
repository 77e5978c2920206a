#include "Wirx/Pam.h"

namespace Wirx {

Orv::Ptr<Pkt> Pam::rxPkt() {
  doGetRxPkt();
  return std::move(rxPktHolder_);
}

void Pam::readableCountInc(Orv::U32 n) {
  assign(readableCount_, readableCount_ + n, readableCountAttr);
}

void Pam::writableCountInc(Orv::U32 n) {
  assign(writableCount_, writableCount_ + n, writableCountAttr);
}

} // namespace Wirx
