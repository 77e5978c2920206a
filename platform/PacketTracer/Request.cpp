#include "PacketTracer/Request.h"

#include "Orv/RangeError.h"

namespace PacketTracer {

namespace {

void checkIndex(Orv::U8 index) {
  if (index >= Request::maxMplsLabels) {
    throw Orv::RangeError(
        "Request::mplsLabel index >= Request::maxMplsLabels not allowed");
  }
}

} // namespace

Wirx::MplsLabelEntry Request::mplsLabel(Orv::U8 index) const {
  checkIndex(index);
  return mplsLabel_[index];
}

void Request::mplsLabelIs(Orv::U8 index, const Wirx::MplsLabelEntry &entry) {
  checkIndex(index);
  mplsLabel_[index] = entry;
}

void Request::numMplsLabelsIs(Orv::U8 count) {
  if (count > maxMplsLabels) {
    throw Orv::RangeError(
        "Request::numMplsLabels > Request::maxMplsLabels not allowed");
  }
  numMplsLabels_ = count;
}

} // namespace PacketTracer
