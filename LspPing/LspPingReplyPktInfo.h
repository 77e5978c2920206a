#pragma once

#include <ostream>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingIntfAndLabelStackInfo.h"
#include "LspPing/LspPingReturnCode.h"
#include "Orv/Export.h"
#include "Orv/SparseArray.h"
#include "Orv/ValueText.h"
#include "Wirx/IpGenAddr.h"

namespace LspPing {

// What one echo reply told a ping client.
struct LSPPING_EXPORT LspPingReplyPktInfo {
  using DownstreamMappingInfos =
      Orv::SparseArray<U32, LspPingDownstreamMappingInfo>;

  // The sequence number in the reply's header: the truth, whatever slot of
  // the status ring the record sits in.
  U32 seqNum = 0;
  LspPingReturnCode retCode = LspPingReturnCode::noRetCode;
  // The reply's IP source.
  Wirx::IpGenAddr replyHost;
  // Microseconds from the request's sent time stamp to the reply's arrival.
  U32 roundTrip = 0;
  LspPingIntfAndLabelStackInfo intfAndLabelStackInfo;
  // One entry per downstream mapping TLV of the reply, in TLV order.
  DownstreamMappingInfos downstreamMappingInfo;

  LspPingReplyPktInfo() = default;
  LspPingReplyPktInfo(U32 seqNum, LspPingReturnCode retCode,
                      const Wirx::IpGenAddr &replyHost, U32 roundTrip)
      : seqNum(seqNum), retCode(retCode), replyHost(replyHost),
        roundTrip(roundTrip) {}

  void downstreamMappingInfoIs(U32 index,
                               const LspPingDownstreamMappingInfo &info) {
    downstreamMappingInfo.is(index, info);
  }
  void downstreamMappingInfoDel(U32 index) { downstreamMappingInfo.del(index); }
  void downstreamMappingInfoDelAll() { downstreamMappingInfo.delAll(); }

  bool operator==(const LspPingReplyPktInfo &) const = default;
  bool operator!() const { return *this == LspPingReplyPktInfo(); }

  static constexpr std::string_view valueTypeName =
      "LspPing::LspPingReplyPktInfo";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"seqNum", &LspPingReplyPktInfo::seqNum},
                 Orv::Field{"retCode", &LspPingReplyPktInfo::retCode},
                 Orv::Field{"replyHost", &LspPingReplyPktInfo::replyHost},
                 Orv::Field{"roundTrip", &LspPingReplyPktInfo::roundTrip},
                 Orv::Field{"intfAndLabelStackInfo",
                            &LspPingReplyPktInfo::intfAndLabelStackInfo},
                 Orv::Field{"downstreamMappingInfo",
                            &LspPingReplyPktInfo::downstreamMappingInfo}};
  // A record with a collection is never built from text: asks to do so are
  // a programming error.
  static void valueTextReadRefused();
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LspPingReplyPktInfo &info);

LSPPING_EXPORT LspPingReplyPktInfo
lspPingReplyPktInfoFactory(U32 seqNum, LspPingReturnCode retCode,
                           const Wirx::IpGenAddr &replyHost, U32 roundTrip);

} // namespace LspPing
