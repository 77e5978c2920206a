#pragma once

#include <optional>
#include <string_view>

#include "LspPing/LspPingDownstreamSignalingProtocol.h"

namespace LspPingTool {

// The short names of the protocols that signal a downstream label, the same
// in what the tool reads and what it prints: unknown, static, bgp, ldp,
// rsvp, ospf and isis.
std::optional<LspPing::LspPingDownstreamSignalingProtocol>
signalingProtocol(std::string_view name);

// Empty for a value with no name.
std::string_view
signalingProtocolName(LspPing::LspPingDownstreamSignalingProtocol protocol);

} // namespace LspPingTool
