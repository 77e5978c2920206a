#pragma once

#include <string>

#include "LspPing/LspPingIntfAndLabelStackInfo.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/Pkt.h"

namespace LspPing {

// Reads one Interface and Label Stack TLV (its header at `offset`) into an
// LspPingIntfAndLabelStackInfo.
class LSPPING_EXPORT LspPingIntfAndLabelStackTlvParser : public Orv::Entity {
public:
  LspPingIntfAndLabelStackTlvParser(Orv::Ptr<Wirx::Pkt> pkt, U32 offset)
      : pkt_(std::move(pkt)), offset_(offset) {}

  const Orv::Ptr<Wirx::Pkt> &pkt() const { return pkt_; }
  U32 offset() const { return offset_; }
  bool valid() const { return valid_; }
  const std::string &reason() const { return reason_; }
  const LspPingIntfAndLabelStackInfo &intfAndLabelStackInfo() const {
    return intfAndLabelStackInfo_;
  }

  bool initialized() const { return initialized_; }
  // Setting it runs the parse.
  void initializedIs(bool initialized);

private:
  void parse();
  void fault(const std::string &reason);

  Orv::Ptr<Wirx::Pkt> pkt_;
  U32 offset_;
  bool valid_ = false;
  std::string reason_;
  LspPingIntfAndLabelStackInfo intfAndLabelStackInfo_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingIntfAndLabelStackTlvParser>
lspPingIntfAndLabelStackTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
