#pragma once

#include <optional>
#include <string>

#include "LspPing/LspPingFec128Ipv4SubTlv.h"
#include "LspPing/LspPingLdpIpv4SubTlv.h"
#include "LspPing/LspPingNilFecSubTlv.h"
#include "LspPing/LspPingPwInfo.h"
#include "LspPing/LspPingRsvpIpv4SubTlv.h"
#include "LspPing/LspPingSrIpv4SubTlv.h"
#include "LspPing/LspPingSrIpv6SubTlv.h"
#include "LspPing/LspPingTlvGroupParser.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Rsvp/RsvpSpId.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/IpGenPrefix.h"

namespace LspPing {

// Reads the Target FEC Stack TLV whose value starts at `offset`: keeps the
// last sub-TLV of each kind it knows and turns the first usable one into the
// tested path (a prefix, an RSVP identity, or a pseudowire).
class LSPPING_EXPORT LspPingTargetFecTlvParser : public Orv::Entity {
public:
  LspPingTargetFecTlvParser(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

  const Orv::Ptr<Wirx::Pkt> &pkt() const { return pkt_; }
  U32 offset() const { return offset_; }
  bool valid() const { return valid_; }
  const std::string &reason() const { return reason_; }

  const LspPingLdpIpv4SubTlv *ldpIpv4SubTlv() const { return ldpIpv4SubTlv_; }
  const LspPingRsvpIpv4SubTlv *rsvpIpv4SubTlv() const {
    return rsvpIpv4SubTlv_;
  }
  const LspPingSrIpv4SubTlv *srIpv4SubTlv() const { return srIpv4SubTlv_; }
  // Sent with either IPv6 segment-routing code.
  const LspPingSrIpv6SubTlv *srIpv6SubTlv() const { return srIpv6SubTlv_; }
  const LspPingNilFecSubTlv *nilFecSubTlv() const { return nilFecSubTlv_; }
  const LspPingFec128Ipv4SubTlv *fec128Ipv4SubTlv() const {
    return fec128Ipv4SubTlv_;
  }

  // The tested prefix of an LDP or segment-routing FEC; empty otherwise.
  const Wirx::IpGenPrefix &targetFec() const { return targetFec_; }
  const Rsvp::RsvpSpId &rsvpSpId() const { return rsvpSpId_; }
  const Wirx::IpGenAddr &rsvpSenderAddr() const { return rsvpSenderAddr_; }
  const LspPingPwInfo &pwInfo() const { return pwInfo_; }

  const LspPingTlvGroupParser *tlvGroupParser() const {
    return tlvGroupParser_ ? &*tlvGroupParser_ : nullptr;
  }
  U32 tlvNum() const { return tlvGroupParser_ ? tlvGroupParser_->tlvNum() : 0; }
  U32 tlvOffset(U32 index) const { return tlvGroupParser_->tlvOffset(index); }

  bool initialized() const { return initialized_; }
  // Setting it runs the parse.
  void initializedIs(bool initialized);

private:
  void parse();
  void fault(const std::string &reason);
  bool enclosedInTargetFecStack() const;
  void keepKnownSubTlvs();
  template <class Record> const Record *recordAt(U32 position) const;
  void chooseResult();

  Orv::Ptr<Wirx::Pkt> pkt_;
  U32 offset_;
  bool valid_ = false;
  std::string reason_;
  const LspPingLdpIpv4SubTlv *ldpIpv4SubTlv_ = nullptr;
  const LspPingRsvpIpv4SubTlv *rsvpIpv4SubTlv_ = nullptr;
  const LspPingSrIpv4SubTlv *srIpv4SubTlv_ = nullptr;
  const LspPingSrIpv6SubTlv *srIpv6SubTlv_ = nullptr;
  const LspPingNilFecSubTlv *nilFecSubTlv_ = nullptr;
  const LspPingFec128Ipv4SubTlv *fec128Ipv4SubTlv_ = nullptr;
  Wirx::IpGenPrefix targetFec_;
  Rsvp::RsvpSpId rsvpSpId_;
  Wirx::IpGenAddr rsvpSenderAddr_;
  LspPingPwInfo pwInfo_;
  std::optional<LspPingTlvGroupParser> tlvGroupParser_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPingTargetFecTlvParser>
lspPingTargetFecTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
