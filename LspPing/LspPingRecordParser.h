#pragma once

#include "LspPing/LspPingEnum.h"
#include "Orv/Entity.h"
#include "Wirx/Pkt.h"

namespace LspPing {

// Locates one wire record in a packet and nothing more: validation is the
// record's own valid(). The family of small parsers differs only in Record.
template <class Record> class LspPingRecordParser : public Orv::Entity {
public:
  LspPingRecordParser(Orv::Ptr<Wirx::Pkt> pkt, U32 offset)
      : pkt_(std::move(pkt)), offset_(offset) {
    initialized_ = true;
    handleHeader();
  }

  const Orv::Ptr<Wirx::Pkt> &pkt() const { return pkt_; }
  U32 offset() const { return offset_; }
  const Record *header() const { return header_; }

  // Points `header` at the packet's data plus the offset, unchecked.
  void handleHeader() {
    if (!initialized_) {
      return;
    }
    header_ = reinterpret_cast<const Record *>(pkt_->data() + offset_);
  }

private:
  Orv::Ptr<Wirx::Pkt> pkt_;
  U32 offset_;
  const Record *header_ = nullptr;
  bool initialized_ = false;
};

} // namespace LspPing
