#pragma once

#include <string>

#include "LspPing/TlvTypeOffsetColl.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/SmallVec.h"
#include "Wirx/Pkt.h"

namespace LspPing {

// Walks a sequence of TLVs (the body of an echo message, or the sub-TLVs of
// a Target FEC Stack), checks that each fits, and indexes them by position
// and by type. Only offsets into the packet are kept.
class LSPPING_EXPORT LspPingTlvGroupParser : public Orv::Entity {
public:
  LspPingTlvGroupParser(Orv::Ptr<Wirx::Pkt> pkt, U32 offset, U32 size);

  const Orv::Ptr<Wirx::Pkt> &pkt() const { return pkt_; }
  U32 offset() const { return offset_; }
  U32 size() const { return size_; }
  bool valid() const { return valid_; }
  const std::string &reason() const { return reason_; }

  // The TLVs of one type, or null when the group has none.
  const TlvTypeOffsetColl *tlvTypeOffset(U16 type) const;
  U32 tlvOffset(U32 index) const { return tlvOffset_[index]; }
  U32 tlvNum() const { return static_cast<U32>(tlvOffset_.size()); }

  // Walks the group; on a fault sets `reason` and leaves what was indexed.
  void parseTlvGroup();

private:
  void fault(const std::string &reason);
  void tlvIndexIs(U16 type, U32 position);

  Orv::Ptr<Wirx::Pkt> pkt_;
  U32 offset_;
  U32 size_;
  bool valid_ = false;
  std::string reason_;
  Orv::SmallVec<TlvTypeOffsetColl, 4> tlvTypeOffset_;
  Orv::SmallVec<U32, 8> tlvOffset_;
};

LSPPING_EXPORT Orv::Ptr<LspPingTlvGroupParser>
lspPingTlvGroupParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset, U32 size);

} // namespace LspPing
