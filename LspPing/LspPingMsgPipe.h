#pragma once

#include "LspPing/LspPingMsg.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"

namespace LspPing {

// A one-message mailbox from the reply listener to one client's receiver.
// Writing raises `readableCount`, whose watcher takes the message at once
// (notification is synchronous), so the slot is empty again before the next
// write. A second write into a full slot is a broken hand-off, not bad input.
class LSPPING_EXPORT LspPingMsgPipe : public Orv::NamedEntity {
public:
  static constexpr Orv::Attr<U32> readableCountAttr{1};

  using NamedEntity::NamedEntity;

  const Orv::Ptr<LspPingMsg> &msgHolder() const { return msgHolder_; }
  // Counts messages ever written; a change counter, not a level.
  U32 readableCount() const { return readableCount_; }

  void txMsgIs(const Orv::Ptr<LspPingMsg> &msg);
  // Takes the held message (null if none) and empties the slot.
  Orv::Ptr<LspPingMsg> rxMsg();

private:
  void readableCountInc(U32 n);

  Orv::Ptr<LspPingMsg> msgHolder_;
  U32 readableCount_ = 0;
};

LSPPING_EXPORT Orv::Ptr<LspPingMsgPipe>
lspPingMsgPipeFactory(const Orv::Name &name);

} // namespace LspPing
