#include "tools/SignalingProtocolName.h"

#include <utility>

namespace LspPingTool {

namespace {

using Protocol = LspPing::LspPingDownstreamSignalingProtocol;

constexpr std::pair<std::string_view, Protocol> names[] = {
    {"unknown", Protocol::dsInfoSignalingProtocolUnknown},
    {"static", Protocol::dsInfoSignalingProtocolStatic},
    {"bgp", Protocol::dsInfoSignalingProtocolBgp},
    {"ldp", Protocol::dsInfoSignalingProtocolLdp},
    {"rsvp", Protocol::dsInfoSignalingProtocolRsvpTe},
    {"ospf", Protocol::dsInfoSignalingProtocolOspf},
    {"isis", Protocol::dsInfoSignalingProtocolIsis},
};

} // namespace

std::optional<Protocol> signalingProtocol(std::string_view name) {
  for (const auto &[text, protocol] : names) {
    if (text == name) {
      return protocol;
    }
  }
  return std::nullopt;
}

std::string_view signalingProtocolName(Protocol protocol) {
  for (const auto &[text, value] : names) {
    if (value == protocol) {
      return text;
    }
  }
  return {};
}

} // namespace LspPingTool
