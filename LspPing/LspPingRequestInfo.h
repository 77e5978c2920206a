#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingEnum.h"
#include "LspPing/LspPingReturnCode.h"
#include "Mpls/LfibRoute.h"
#include "Mpls/LfibViaSet.h"
#include "Orv/Export.h"
#include "Orv/ValueText.h"

namespace LspPing {

// The responder's verdict on one echo request: the code and subcode to
// answer with, and the forwarding entry of the label the request arrived
// on, from which the downstream mappings are built.
struct LspPingRequestInfo {
  LspPingReturnCode retCode = LspPingReturnCode::noRetCode;
  // The label-stack depth at which retCode applies.
  U8 retSubcode = 0;
  Mpls::LfibViaSet viaSet;
  Mpls::LfibRoute route;

  LspPingRequestInfo() = default;
  LspPingRequestInfo(LspPingReturnCode retCode, U8 retSubcode)
      : retCode(retCode), retSubcode(retSubcode) {}

  bool operator==(const LspPingRequestInfo &) const = default;
  bool operator!() const { return *this == LspPingRequestInfo(); }

  static constexpr std::string_view valueTypeName =
      "LspPing::LspPingRequestInfo";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"retCode", &LspPingRequestInfo::retCode},
                 Orv::Field{"retSubcode", &LspPingRequestInfo::retSubcode},
                 Orv::Field{"viaSet", &LspPingRequestInfo::viaSet},
                 Orv::Field{"route", &LspPingRequestInfo::route}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LspPingRequestInfo &info);

LSPPING_EXPORT LspPingRequestInfo lspPingRequestInfoFactory(
    LspPingReturnCode retCode = LspPingReturnCode::noRetCode,
    U8 retSubcode = 0);

} // namespace LspPing
