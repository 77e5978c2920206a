#pragma once

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"

namespace LspPing {

// Fixed numbers of the echo requests the client sends.
struct LspPingPktConstants {
  static constexpr U16 version = 1;
  static constexpr U16 globalFlags = 0;
  static constexpr U8 messageTypeRequest = 1;
  static constexpr U8 messageTypeReply = 2;
  static constexpr U8 prefixLength = 32;
  static constexpr U16 reqDestUdpPort = 3503;
  // The MPLS unicast EtherType.
  static constexpr U16 mplsUnicast = 0x8847;

  bool operator==(const LspPingPktConstants &) const = default;
};

LSPPING_EXPORT LspPingPktConstants lspPingPktConstantsFactory();

} // namespace LspPing
