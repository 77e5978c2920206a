#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// IGP of a segment-routing sub-TLV, one byte.
enum class LspPingSrIgpProtocol : U32 {
  ospf = 1,
  isis = 2,
};

inline constexpr Orv::EnumEntry lspPingSrIgpProtocolNames[] = {
    {"ospf", 1},
    {"isis", 2},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingSrIgpProtocol> {
  static constexpr EnumType type{"LspPing::LspPingSrIgpProtocol",
                                 LspPing::lspPingSrIgpProtocolNames};
};

namespace LspPing {

inline LspPingSrIgpProtocol LspPingSrIgpProtocolInstance(U32 value) {
  return Orv::enumInstance<LspPingSrIgpProtocol>(value);
}
inline LspPingSrIgpProtocol
LspPingSrIgpProtocolInstance(std::string_view name) {
  return Orv::enumInstance<LspPingSrIgpProtocol>(name);
}

} // namespace LspPing
