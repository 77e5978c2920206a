#pragma once

#include <optional>
#include <string>

#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingTlvGroupParser.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/Pkt.h"

namespace LspPing {

// Parses one received echo message: the echo header at `offset`, then the
// TLVs behind it up to the end of the packet's data.
class LSPPING_EXPORT LspPingPduParser : public Orv::Entity {
public:
  LspPingPduParser(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

  const Orv::Ptr<Wirx::Pkt> &pkt() const { return pkt_; }
  U32 offset() const { return offset_; }
  bool valid() const { return valid_; }
  const std::string &reason() const { return reason_; }
  // The header overlaid on the packet; null unless it was valid.
  const LspPingHdr *lspPingHdr() const { return lspPingHdr_; }
  // The parser of the TLVs; null until the header passed.
  const LspPingTlvGroupParser *tlvGroupParser() const {
    return tlvGroupParser_ ? &*tlvGroupParser_ : nullptr;
  }
  U32 tlvNum() const { return tlvGroupParser_ ? tlvGroupParser_->tlvNum() : 0; }
  U32 tlvOffset(U32 index) const { return tlvGroupParser_->tlvOffset(index); }
  // False when a mandatory TLV type that we do not handle was found; the
  // message stays valid and the caller decides what to answer.
  bool tlvSupported() const { return tlvSupported_; }

  bool initialized() const { return initialized_; }
  // Setting it runs the parse.
  void initializedIs(bool initialized);

private:
  void parse();
  void fault(const std::string &reason);
  bool hasOnlySupportedTlvs() const;

  Orv::Ptr<Wirx::Pkt> pkt_;
  U32 offset_;
  bool valid_ = false;
  std::string reason_;
  const LspPingHdr *lspPingHdr_ = nullptr;
  std::optional<LspPingTlvGroupParser> tlvGroupParser_;
  bool tlvSupported_ = false;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingPduParser>
lspPingPduParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
