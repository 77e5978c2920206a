#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Orv/ValueText.h"
#include "Wirx/IpGenAddr.h"

namespace LspPing {

// The identity of a FEC 128 pseudowire named by a Target FEC Stack.
struct LSPPING_EXPORT LspPingPwInfo {
  Wirx::IpGenAddr senderAddr;
  Wirx::IpGenAddr receiverAddr;
  U32 pwId = 0;
  U32 pwType = 0;

  LspPingPwInfo() = default;
  LspPingPwInfo(const Wirx::IpGenAddr &senderAddr,
                const Wirx::IpGenAddr &receiverAddr, U32 pwId, U32 pwType);

  bool operator==(const LspPingPwInfo &) const = default;
  bool operator!() const { return *this == LspPingPwInfo(); }

  static constexpr std::string_view valueTypeName = "LspPing::LspPingPwInfo";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"senderAddr", &LspPingPwInfo::senderAddr},
                 Orv::Field{"receiverAddr", &LspPingPwInfo::receiverAddr},
                 Orv::Field{"pwId", &LspPingPwInfo::pwId},
                 Orv::Field{"pwType", &LspPingPwInfo::pwType}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LspPingPwInfo &info);

LSPPING_EXPORT LspPingPwInfo lspPingPwInfoFactory();
LSPPING_EXPORT LspPingPwInfo
lspPingPwInfoFactory(const Wirx::IpGenAddr &senderAddr,
                     const Wirx::IpGenAddr &receiverAddr, U32 pwId, U32 pwType);

} // namespace LspPing
