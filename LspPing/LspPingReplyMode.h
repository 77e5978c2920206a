#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// One byte in the echo header.
enum class LspPingReplyMode : U32 {
  DontReply = 1,
  ReplyIpUdp = 2,
  ReplyIpUdpRouterAlert = 3,
  ReplyViaAppCtrlChannel = 4,
};

inline constexpr Orv::EnumEntry lspPingReplyModeNames[] = {
    {"DontReply", 1},
    {"ReplyIpUdp", 2},
    {"ReplyIpUdpRouterAlert", 3},
    {"ReplyViaAppCtrlChannel", 4},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingReplyMode> {
  static constexpr EnumType type{"LspPing::LspPingReplyMode",
                                 LspPing::lspPingReplyModeNames};
};

namespace LspPing {

inline LspPingReplyMode LspPingReplyModeInstance(U32 value) {
  return Orv::enumInstance<LspPingReplyMode>(value);
}
inline LspPingReplyMode LspPingReplyModeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingReplyMode>(name);
}

} // namespace LspPing
