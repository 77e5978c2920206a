#pragma once

#include "LspPing/LspPingRecord.h"

namespace LspPing {

// The label word of a Nil FEC sub-TLV: the label in the top 20 bits, the low
// 12 bits must be zero.
struct LspPingNilFecSubTlvLabel {
  U32Nbo labelNbo{0};

  U32 label() const { return labelNbo.value() >> 12; }
  // Keeps the low 12 bits as they are.
  void labelIs(U32 label) {
    labelNbo.valueIs((label << 12) | (labelNbo.value() & 0xFFFu));
  }
  bool operator==(const LspPingNilFecSubTlvLabel &o) const {
    return labelNbo.value() == o.labelNbo.value();
  }
  bool operator<(const LspPingNilFecSubTlvLabel &o) const {
    return labelNbo.value() < o.labelNbo.value();
  }
};
static_assert(sizeof(LspPingNilFecSubTlvLabel) == 4);

} // namespace LspPing
