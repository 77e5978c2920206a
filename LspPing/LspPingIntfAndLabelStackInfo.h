#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Orv/ValueText.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/MplsLabelStack.h"

namespace LspPing {

// What an Interface and Label Stack TLV tells: the interface a request
// arrived on and the label stack it arrived with.
struct LSPPING_EXPORT LspPingIntfAndLabelStackInfo {
  Wirx::IpGenAddr addr;
  Wirx::IntfId intf;
  Wirx::MplsLabelStack labelStack;
  // Set when the TLV was parsed completely.
  bool valid = false;

  LspPingIntfAndLabelStackInfo() = default;
  LspPingIntfAndLabelStackInfo(const Wirx::IpGenAddr &addr, Wirx::IntfId intf,
                               const Wirx::MplsLabelStack &labelStack,
                               bool valid);

  bool operator==(const LspPingIntfAndLabelStackInfo &) const = default;
  bool operator!() const { return *this == LspPingIntfAndLabelStackInfo(); }

  static constexpr std::string_view valueTypeName =
      "LspPing::LspPingIntfAndLabelStackInfo";
  static constexpr auto valueFields = std::tuple{
      Orv::Field{"addr", &LspPingIntfAndLabelStackInfo::addr},
      Orv::Field{"intf", &LspPingIntfAndLabelStackInfo::intf},
      Orv::Field{"labelStack", &LspPingIntfAndLabelStackInfo::labelStack},
      Orv::Field{"valid", &LspPingIntfAndLabelStackInfo::valid}};
};

LSPPING_EXPORT std::ostream &
operator<<(std::ostream &os, const LspPingIntfAndLabelStackInfo &info);

LSPPING_EXPORT LspPingIntfAndLabelStackInfo
lspPingIntfAndLabelStackInfoFactory();
LSPPING_EXPORT LspPingIntfAndLabelStackInfo lspPingIntfAndLabelStackInfoFactory(
    const Wirx::IpGenAddr &addr, Wirx::IntfId intf,
    const Wirx::MplsLabelStack &labelStack, bool valid);

} // namespace LspPing
