#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingDownstreamLabelStack.h"
#include "LspPing/LspPingEnum.h"
#include "LspPing/LspPingMultipathBitset.h"
#include "Orv/Export.h"
#include "Orv/ValueText.h"
#include "Wirx/IpGenAddr.h"

namespace LspPing {

// One downstream mapping, as a reply carries it or the responder builds it.
// `addrType` holds an LspPingAddrType value and `multipathType` an
// LspPingMultipathType value, kept as the bytes the TLV carries so that
// values we have no name for survive a round trip.
struct LSPPING_EXPORT LspPingDownstreamMappingInfo {
  U16 mtu = 0;
  U8 addrType = 0;
  U8 dsFlags = 0;
  Wirx::IpGenAddr dsIpAddr;
  Wirx::IpGenAddr dsIntfAddr;
  U8 multipathType = 0;
  U8 depthLimit = 0;
  Wirx::IpGenAddr dsMultipathBaseAddr;
  LspPingMultipathBitset dsMultipathBitset;
  LspPingDownstreamLabelStack labelStack;
  // Set when the mapping was built or parsed completely.
  bool valid = false;

  LspPingDownstreamMappingInfo() = default;
  LspPingDownstreamMappingInfo(U16 mtu, U8 addrType, U8 dsFlags,
                               const Wirx::IpGenAddr &dsIpAddr,
                               const Wirx::IpGenAddr &dsIntfAddr,
                               U8 multipathType, U8 depthLimit,
                               const Wirx::IpGenAddr &dsMultipathBaseAddr,
                               LspPingMultipathBitset dsMultipathBitset,
                               LspPingDownstreamLabelStack labelStack,
                               bool valid);

  bool operator==(const LspPingDownstreamMappingInfo &) const = default;
  bool operator!() const { return *this == LspPingDownstreamMappingInfo(); }

  static constexpr std::string_view valueTypeName =
      "LspPing::LspPingDownstreamMappingInfo";
  static constexpr auto valueFields = std::tuple{
      Orv::Field{"mtu", &LspPingDownstreamMappingInfo::mtu},
      Orv::Field{"addrType", &LspPingDownstreamMappingInfo::addrType},
      Orv::Field{"dsFlags", &LspPingDownstreamMappingInfo::dsFlags},
      Orv::Field{"dsIpAddr", &LspPingDownstreamMappingInfo::dsIpAddr},
      Orv::Field{"dsIntfAddr", &LspPingDownstreamMappingInfo::dsIntfAddr},
      Orv::Field{"multipathType", &LspPingDownstreamMappingInfo::multipathType},
      Orv::Field{"depthLimit", &LspPingDownstreamMappingInfo::depthLimit},
      Orv::Field{"dsMultipathBaseAddr",
                 &LspPingDownstreamMappingInfo::dsMultipathBaseAddr},
      Orv::Field{"dsMultipathBitset",
                 &LspPingDownstreamMappingInfo::dsMultipathBitset},
      Orv::Field{"labelStack", &LspPingDownstreamMappingInfo::labelStack},
      Orv::Field{"valid", &LspPingDownstreamMappingInfo::valid}};
};

LSPPING_EXPORT std::ostream &
operator<<(std::ostream &os, const LspPingDownstreamMappingInfo &info);

LSPPING_EXPORT LspPingDownstreamMappingInfo
lspPingDownstreamMappingInfoFactory();
LSPPING_EXPORT LspPingDownstreamMappingInfo lspPingDownstreamMappingInfoFactory(
    U16 mtu, U8 addrType, U8 dsFlags, const Wirx::IpGenAddr &dsIpAddr,
    const Wirx::IpGenAddr &dsIntfAddr, U8 multipathType, U8 depthLimit,
    const Wirx::IpGenAddr &dsMultipathBaseAddr,
    LspPingMultipathBitset dsMultipathBitset,
    LspPingDownstreamLabelStack labelStack, bool valid);

} // namespace LspPing
