#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// The protocol that signalled a downstream label; never on the wire.
enum class LspPingDownstreamSignalingProtocol : U32 {
  dsInfoSignalingProtocolUnknown = 0,
  dsInfoSignalingProtocolStatic = 1,
  dsInfoSignalingProtocolBgp = 2,
  dsInfoSignalingProtocolLdp = 3,
  dsInfoSignalingProtocolRsvpTe = 4,
  dsInfoSignalingProtocolOspf = 5,
  dsInfoSignalingProtocolIsis = 6,
};

inline constexpr Orv::EnumEntry lspPingDownstreamSignalingProtocolNames[] = {
    {"dsInfoSignalingProtocolUnknown", 0}, {"dsInfoSignalingProtocolStatic", 1},
    {"dsInfoSignalingProtocolBgp", 2},     {"dsInfoSignalingProtocolLdp", 3},
    {"dsInfoSignalingProtocolRsvpTe", 4},  {"dsInfoSignalingProtocolOspf", 5},
    {"dsInfoSignalingProtocolIsis", 6},
};

} // namespace LspPing

template <>
struct Orv::EnumTraits<LspPing::LspPingDownstreamSignalingProtocol> {
  static constexpr EnumType type{
      "LspPing::LspPingDownstreamSignalingProtocol",
      LspPing::lspPingDownstreamSignalingProtocolNames};
};

namespace LspPing {

inline LspPingDownstreamSignalingProtocol
LspPingDownstreamSignalingProtocolInstance(U32 value) {
  return Orv::enumInstance<LspPingDownstreamSignalingProtocol>(value);
}
inline LspPingDownstreamSignalingProtocol
LspPingDownstreamSignalingProtocolInstance(std::string_view name) {
  return Orv::enumInstance<LspPingDownstreamSignalingProtocol>(name);
}

} // namespace LspPing
