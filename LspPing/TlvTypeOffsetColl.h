#pragma once

#include "LspPing/LspPingEnum.h"
#include "Orv/SmallVec.h"

namespace LspPing {

// The packet offsets of every TLV of one type in a group, in the order met.
class TlvTypeOffsetColl {
public:
  TlvTypeOffsetColl() = default;
  explicit TlvTypeOffsetColl(U16 type) : type_(type) {}

  U16 type() const { return type_; }
  U32 offsetNum() const { return static_cast<U32>(offset_.size()); }
  U32 offset(U32 index) const { return offset_[index]; }
  void offsetIs(U32 offset) { offset_.push_back(offset); }

private:
  U16 type_ = 0;
  Orv::SmallVec<U32, 2> offset_;
};

} // namespace LspPing
