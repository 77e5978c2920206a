#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// One byte in the echo header.
enum class LspPingMsgType : U32 {
  MplsEchoRequest = 1,
  MplsEchoReply = 2,
};

inline constexpr Orv::EnumEntry lspPingMsgTypeNames[] = {
    {"MplsEchoRequest", 1},
    {"MplsEchoReply", 2},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingMsgType> {
  static constexpr EnumType type{"LspPing::LspPingMsgType",
                                 LspPing::lspPingMsgTypeNames};
};

namespace LspPing {

inline LspPingMsgType LspPingMsgTypeInstance(U32 value) {
  return Orv::enumInstance<LspPingMsgType>(value);
}
inline LspPingMsgType LspPingMsgTypeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingMsgType>(name);
}

} // namespace LspPing
