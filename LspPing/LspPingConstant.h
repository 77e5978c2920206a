#pragma once

#include <string_view>

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"

namespace LspPing {

// The echo protocol's service name and UDP port; a value without state.
struct LspPingConstant {
  static constexpr std::string_view lspPingServiceName = "lspPing";
  static constexpr U16 lspPingUdpPort = 3503;

  bool operator==(const LspPingConstant &) const = default;
};

LSPPING_EXPORT LspPingConstant lspPingConstantFactory();

} // namespace LspPing
