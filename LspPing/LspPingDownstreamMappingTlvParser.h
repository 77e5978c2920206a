#pragma once

#include <string>

#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingDownstreamMappingTlvContainer.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/Pkt.h"

namespace LspPing {

// Reads one Downstream Mapping TLV (its header at `offset`) into an
// LspPingDownstreamMappingInfo. Only the masked IP set multipath form is
// read; the other defined forms are refused, undefined ones skipped.
class LSPPING_EXPORT LspPingDownstreamMappingTlvParser : public Orv::Entity {
public:
  LspPingDownstreamMappingTlvParser(Orv::Ptr<Wirx::Pkt> pkt, U32 offset)
      : pkt_(std::move(pkt)), offset_(offset) {}

  const Orv::Ptr<Wirx::Pkt> &pkt() const { return pkt_; }
  U32 offset() const { return offset_; }
  bool valid() const { return valid_; }
  const std::string &reason() const { return reason_; }
  const LspPingDownstreamMappingInfo &downstreamMappingInfo() const {
    return downstreamMappingInfo_;
  }

  bool initialized() const { return initialized_; }
  // Setting it runs the parse.
  void initializedIs(bool initialized);

private:
  void parse();
  void fault(const std::string &reason);
  // Reads the multipath information; false with the reason set if refused.
  bool readMultipath(const U8 *multipath, U16 length,
                     const LspPingDownstreamMappingTlvContainer &view);

  Orv::Ptr<Wirx::Pkt> pkt_;
  U32 offset_;
  bool valid_ = false;
  std::string reason_;
  LspPingDownstreamMappingInfo downstreamMappingInfo_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingDownstreamMappingTlvParser>
lspPingDownstreamMappingTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
