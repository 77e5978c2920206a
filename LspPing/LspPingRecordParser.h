#pragma once

#include "LspPing/LspPingEnum.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/Pkt.h"

namespace LspPing {

// Locates one wire record in a packet and nothing more: validation is the
// record's own valid(). The family of small parsers differs only in Record.
// Exported although a template: each parser is polymorphic, and its type
// information must be one on both sides of the library's boundary.
template <class Record>
class LSPPING_EXPORT LspPingRecordParser : public Orv::Entity {
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
