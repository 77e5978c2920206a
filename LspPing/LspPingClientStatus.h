#pragma once

#include "LspPing/LspPingReplyPktInfo.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"

namespace LspPing {

// What a ping client has done: the last sequence number sent, and one record
// per reply received.
class LSPPING_EXPORT LspPingClientStatus : public Orv::Entity {
public:
  static constexpr Orv::Attr<U32> sequenceNumAttr{1};
  static constexpr Orv::Attr<U32> lastReplyPktSeqAttr{2};
  static constexpr Orv::CollAttr<U8> replyPktInfoAttr{3};

  explicit LspPingClientStatus(U32 clientId) : clientId_(clientId) {}

  U32 clientId() const { return clientId_; }
  U32 sequenceNum() const { return sequenceNum_; }
  // For readers of the status; the client itself never writes it.
  U32 lastReplyPktSeq() const { return lastReplyPktSeq_; }
  // A ring of 256 slots keyed by the low 8 bits of the reply's sequence
  // number: reply n overwrites the record of reply n - 256.
  const Orv::Coll<U8, LspPingReplyPktInfo> &replyPktInfo() const {
    return replyPktInfo_;
  }

  void sequenceNumIs(U32 v) { assign(sequenceNum_, v, sequenceNumAttr); }
  void sequenceNumInc(U32 by) { sequenceNumIs(sequenceNum_ + by); }
  void lastReplyPktSeqIs(U32 v) {
    assign(lastReplyPktSeq_, v, lastReplyPktSeqAttr);
  }
  void replyPktInfoIs(U8 key, const LspPingReplyPktInfo &record) {
    replyPktInfo_.is(key, record);
  }
  void replyPktInfoDel(U8 key) { replyPktInfo_.del(key); }
  void replyPktInfoDelAll() { replyPktInfo_.delAll(); }

private:
  const U32 clientId_;
  U32 sequenceNum_ = 0;
  U32 lastReplyPktSeq_ = 0;
  Orv::Coll<U8, LspPingReplyPktInfo> replyPktInfo_{*this, replyPktInfoAttr};
};

LSPPING_EXPORT Orv::Ptr<LspPingClientStatus>
lspPingClientStatusFactory(U32 clientId);

} // namespace LspPing
