#pragma once

#include "LspPing/LspPingClientConfig.h"
#include "LspPing/LspPingClientStatus.h"
#include "LspPing/LspPingMsgPipe.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Reactor.h"

namespace LspPing {

// Records one ping client's echo replies: takes each message the reply
// listener posts into the client's pipe, parses it, measures the round trip
// from the echoed sent time stamp and stores one reply record in the status
// under the sequence number's low 8 bits.
class LSPPING_EXPORT LspPingClientRxSm : public Orv::Object,
                                         public Orv::Reactor {
public:
  LspPingClientRxSm(U32 clientId,
                    Orv::Ptr<const LspPingClientConfig> lspPingClientConfig,
                    Orv::Ptr<LspPingClientStatus> lspPingClientStatus,
                    Orv::Ptr<LspPingMsgPipe> lspPingReplyRxMsgPipe);

  U32 clientId() const { return clientId_; }
  const Orv::Ptr<const LspPingClientConfig> &lspPingClientConfig() const {
    return lspPingClientConfig_;
  }
  const Orv::Ptr<LspPingClientStatus> &lspPingClientStatus() const {
    return lspPingClientStatus_;
  }
  const Orv::Ptr<LspPingMsgPipe> &lspPingReplyRxMsgPipe() const {
    return lspPingReplyRxMsgPipe_;
  }
  bool initialized() const { return initialized_; }

  void handleInitialized();
  void handleRxMsg();
  void handleDelete();

private:
  // The record of a parsed reply; false (traced) when a TLV is malformed.
  bool replyTlvsRead(const LspPingPduParser &pdu,
                     LspPingReplyPktInfo &record) const;

  const U32 clientId_;
  const Orv::Ptr<const LspPingClientConfig> lspPingClientConfig_;
  const Orv::Ptr<LspPingClientStatus> lspPingClientStatus_;
  const Orv::Ptr<LspPingMsgPipe> lspPingReplyRxMsgPipe_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingClientRxSm> lspPingClientRxSmFactory(
    U32 clientId, Orv::Ptr<const LspPingClientConfig> lspPingClientConfig,
    Orv::Ptr<LspPingClientStatus> lspPingClientStatus,
    Orv::Ptr<LspPingMsgPipe> lspPingReplyRxMsgPipe);

} // namespace LspPing
