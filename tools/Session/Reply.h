#pragma once

#include <vector>

#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingReturnCode.h"
#include "Orv/Types.h"
#include "Wirx/IpGenAddr.h"

namespace Session {

// One echo reply, as a session reports it.
struct Reply {
  Orv::U32 seq = 0;
  LspPing::LspPingReturnCode code = LspPing::LspPingReturnCode::noRetCode;
  Orv::U8 subcode = 0;
  // The replying router's address.
  Wirx::IpGenAddr from;
  // Microseconds.
  Orv::U32 roundTrip = 0;
  // Its downstream mappings, in the reply's order.
  std::vector<LspPing::LspPingDownstreamMappingInfo> mappings;
};

} // namespace Session
