#include "tools/DecodeCommand.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingDownstreamMappingTlvParser.h"
#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingIntfAndLabelStackTlvParser.h"
#include "LspPing/LspPingMsgType.h"
#include "LspPing/LspPingMultipathType.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingReplyMode.h"
#include "LspPing/LspPingReturnCode.h"
#include "LspPing/LspPingTargetFecTlvParser.h"
#include "LspPing/LspPingTlvHdr.h"
#include "LspPing/LspPingTlvType.h"
#include "MplsUtils/EthPktParser.h"
#include "Wirx/Pkt.h"
#include "tools/ExitStatus.h"
#include "tools/Pcap.h"
#include "tools/SignalingProtocolName.h"
#include "tools/StandardOutput.h"

namespace LspPingTool {

namespace {

using Orv::U16;
using Orv::U32;
using Orv::U8;

// The path a Target FEC Stack names, as its parser chose it.
struct RsvpFec {
  Rsvp::RsvpSpId id;
  Wirx::IpGenAddr senderAddr;
};
struct NilFec {
  U32 label;
};
// No sub-TLV the parser could turn into a path.
struct NoFec {};
using Fec = std::variant<NoFec, Wirx::IpGenPrefix, RsvpFec,
                         LspPing::LspPingPwInfo, NilFec>;

struct FecReport {
  bool valid = false;
  std::string reason;
  Fec fec;
  // The kinds of sub-TLV the parser kept, by the name of its accessor.
  std::vector<std::string> subTlvs;
};

// What the parser of an Interface and Label Stack or a Downstream Mapping
// TLV made of it; `info` is only meaningful when `valid`.
template <class Info> struct InfoReport {
  bool valid = false;
  std::string reason;
  Info info;
};
using IntfAndLabelStackReport =
    InfoReport<LspPing::LspPingIntfAndLabelStackInfo>;
using DownstreamMappingReport =
    InfoReport<LspPing::LspPingDownstreamMappingInfo>;

// Empty for the TLV types the tool has no parser for.
using Decoded = std::variant<std::monostate, FecReport, IntfAndLabelStackReport,
                             DownstreamMappingReport>;

struct TlvReport {
  U16 type;
  U32 offset;      // from the start of the frame
  U32 totalLength; // header, value and padding
  Decoded decoded;
};

// What one frame holds, in a form both output styles print.
struct FrameReport {
  // Set when the frame is not an echo message, saying why.
  std::optional<std::string> notEcho;
  bool valid = false;
  std::string reason;
  std::optional<LspPing::LspPingHdr> header;
  std::vector<TlvReport> tlvs;
  bool tlvSupported = false;
};

FrameReport notEcho(std::string why) {
  FrameReport report;
  report.notEcho = std::move(why);
  return report;
}

// The pseudowire and RSVP results always carry an address once chosen,
// even 0.0.0.0, so an unset address means the parser chose neither.
Fec chosenFec(const LspPing::LspPingTargetFecTlvParser &parser) {
  if (!!parser.targetFec()) {
    return parser.targetFec();
  }
  if (!!parser.rsvpSenderAddr()) {
    return RsvpFec{parser.rsvpSpId(), parser.rsvpSenderAddr()};
  }
  if (!!parser.pwInfo()) {
    return parser.pwInfo();
  }
  if (const LspPing::LspPingNilFecSubTlv *nil = parser.nilFecSubTlv()) {
    return NilFec{nil->labelField.label()};
  }
  return NoFec{};
}

// The parser reads sub-TLVs on to the end of the message, not only of this
// TLV. What it finds there is shown as found: it is what a receiver built on
// the parser gets.
FecReport decodeTargetFec(const Orv::Ptr<Wirx::Pkt> &pkt, U32 offset) {
  auto parser = LspPing::lspPingTargetFecTlvParserFactory(
      pkt, offset + static_cast<U32>(sizeof(LspPing::LspPingTlvHdr)));
  parser->initializedIs(true);
  FecReport report;
  report.valid = parser->valid();
  report.reason = parser->reason();
  if (!report.valid) {
    return report;
  }
  report.fec = chosenFec(*parser);
  const std::pair<const void *, const char *> kinds[] = {
      {parser->ldpIpv4SubTlv(), "ldpIpv4"},
      {parser->rsvpIpv4SubTlv(), "rsvpIpv4"},
      {parser->srIpv4SubTlv(), "srIpv4"},
      {parser->srIpv6SubTlv(), "srIpv6"},
      {parser->nilFecSubTlv(), "nilFec"},
      {parser->fec128Ipv4SubTlv(), "fec128Ipv4"},
  };
  for (const auto &[subTlv, name] : kinds) {
    if (subTlv != nullptr) {
      report.subTlvs.emplace_back(name);
    }
  }
  return report;
}

Decoded decodeTlv(const Orv::Ptr<Wirx::Pkt> &pkt, U16 type, U32 offset) {
  switch (LspPing::LspPingTlvType(type)) {
  case LspPing::LspPingTlvType::TargetFecStack:
    return decodeTargetFec(pkt, offset);
  case LspPing::LspPingTlvType::IntfAndLabelStack: {
    auto parser =
        LspPing::lspPingIntfAndLabelStackTlvParserFactory(pkt, offset);
    parser->initializedIs(true);
    return IntfAndLabelStackReport{parser->valid(), parser->reason(),
                                   parser->intfAndLabelStackInfo()};
  }
  case LspPing::LspPingTlvType::DownstreamMapping: {
    auto parser =
        LspPing::lspPingDownstreamMappingTlvParserFactory(pkt, offset);
    parser->initializedIs(true);
    return DownstreamMappingReport{parser->valid(), parser->reason(),
                                   parser->downstreamMappingInfo()};
  }
  default:
    return {};
  }
}

FrameReport decodeFrame(std::span<const U8> frame) {
  MplsUtils::EthPktParser eth(frame.data(), static_cast<U32>(frame.size()));
  if (!eth.valid()) {
    return notEcho(eth.reason());
  }
  const auto echoPort = LspPing::LspPingConstant::lspPingUdpPort;
  if (eth.srcPort() != echoPort && eth.dstPort() != echoPort) {
    return notEcho("UDP port " + std::to_string(eth.srcPort()) + " to " +
                   std::to_string(eth.dstPort()));
  }
  if (eth.udpLength() < 8) {
    return notEcho("UDP length " + std::to_string(eth.udpLength()) +
                   " is shorter than the UDP header");
  }
  // The echo parser takes every byte up to the packet's end as TLVs, so the
  // packet ends where the UDP length says the payload does: bytes past it,
  // in the IP packet or behind it (padding, a trailer), are no part of the
  // message. A length claiming more than was captured keeps what is there,
  // and the parser reports the message as truncated.
  const U32 payloadLength =
      std::min<U32>(eth.udpPayloadLength(), eth.udpLength() - 8u);
  auto pkt = Wirx::Pkt::copyOf(frame.data(),
                               eth.udpPayloadOffset() + payloadLength, 0);
  if (!pkt) {
    // The hosting agent drops such a frame before any parser sees it.
    return notEcho("more than " + std::to_string(Wirx::Pkt::capacity) +
                   " bytes, too large for a packet buffer");
  }
  auto parser = LspPing::lspPingPduParserFactory(pkt, eth.udpPayloadOffset());
  parser->initializedIs(true);

  FrameReport report;
  report.valid = parser->valid();
  report.reason = parser->reason();
  if (const LspPing::LspPingHdr *hdr = parser->lspPingHdr()) {
    report.header = *hdr;
  }
  for (U32 i = 0; i < parser->tlvNum(); ++i) {
    const U32 offset = parser->tlvOffset(i);
    // Whatever the parser recorded, nothing is read outside the packet.
    if (offset + sizeof(LspPing::LspPingTlvHdr) > pkt->frontBytes()) {
      continue;
    }
    const auto *tlv =
        reinterpret_cast<const LspPing::LspPingTlvHdr *>(pkt->data() + offset);
    report.tlvs.push_back({tlv->type(), offset, tlv->totalLength(),
                           decodeTlv(pkt, tlv->type(), offset)});
  }
  report.tlvSupported = parser->tlvSupported();
  return report;
}

// The call operators of several lambdas as one, for std::visit.
template <class... Fns> struct Overloaded : Fns... {
  using Fns::operator()...;
};
template <class... Fns> Overloaded(Fns...) -> Overloaded<Fns...>;

// The name of `value` in enumeration E, empty for a value it has no name
// for.
template <class E> std::string_view nameOf(U32 value) {
  return Orv::EnumTraits<E>::type.nameOf(value);
}

// "name (number)", as a reader looks a value up by either.
std::string withNumber(std::string_view name, U32 value) {
  return (name.empty() ? std::string("unknown") : std::string(name)) + " (" +
         std::to_string(value) + ")";
}

template <class E> std::string named(U32 value) {
  return withNumber(nameOf<E>(value), value);
}

std::string hex(U32 value, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*x", digits, value);
  return text;
}

// An NTP time stamp as UTC date and time to the microsecond. The seconds
// wrap in 2036: a value with the top bit clear is taken to be past that,
// which leaves 1968 to 2104 readable.
std::string ntpText(U32 seconds, U32 fraction) {
  if (seconds == 0 && fraction == 0) {
    return "not set";
  }
  constexpr std::int64_t ntpToUnix = 2208988800;
  const std::int64_t era = (seconds & 0x80000000u) != 0 ? 0 : 1;
  const std::time_t unixSeconds =
      static_cast<std::time_t>(std::int64_t{seconds} + (era << 32) - ntpToUnix);
  std::tm utc{};
  gmtime_r(&unixSeconds, &utc);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &utc);
  char text[64];
  std::snprintf(
      text, sizeof text, "%s.%06u UTC", date,
      static_cast<unsigned>((std::uint64_t{fraction} * 1000000) >> 32));
  return text;
}

// The multipath bytes behind the base address, in hex.
std::string bitsetHex(const LspPing::LspPingMultipathBitset &bitset) {
  std::string text;
  for (U32 i = 0; i < bitset.size; ++i) {
    char byte[3];
    std::snprintf(byte, sizeof byte, "%02x", bitset.bitset[i]);
    text += byte;
  }
  return text;
}

// A label stack's entries are shown by these two alone, so that what an
// entry holds is said in one place.
std::string labelText(const Wirx::MplsLabelEntry &entry) {
  return entry.label().stringValue() + ", traffic class " +
         std::to_string(entry.tc()) + (entry.bos() ? ", bottom of stack" : "") +
         ", TTL " + std::to_string(entry.ttl());
}

nlohmann::json labelJson(const Wirx::MplsLabelEntry &entry) {
  return {{"label", entry.label().value()},
          {"tc", entry.tc()},
          {"bos", entry.bos()},
          {"ttl", entry.ttl()}};
}

nlohmann::json labelStackJson(const Wirx::MplsLabelStack &stack) {
  nlohmann::json entries = nlohmann::json::array();
  for (const auto &entry : stack) {
    entries.push_back(labelJson(entry));
  }
  return entries;
}

// Prints one field a line, the values aligned in one column, each level of
// detail indented below the one it belongs to.
class Fields {
public:
  explicit Fields(std::ostream &out) : out_(out) {}

  void operator()(int depth, std::string_view name, const std::string &value) {
    std::string line(2 * depth, ' ');
    line += name;
    line += ':';
    line.resize(std::max(valueColumn, line.size() + 1), ' ');
    out_ << line << value << "\n";
  }

private:
  static constexpr std::size_t valueColumn = 28;
  std::ostream &out_;
};

void printFec(Fields &field, const Fec &fec) {
  std::visit(
      Overloaded{
          [&](const NoFec &) { field(2, "FEC", "none the parser could use"); },
          [&](const Wirx::IpGenPrefix &prefix) {
            field(2, "FEC", "prefix " + prefix.stringValue());
          },
          [&](const RsvpFec &rsvp) {
            field(2, "FEC", "RSVP-TE LSP");
            field(3, "tunnel end point", rsvp.id.tunnelDst.stringValue());
            field(3, "tunnel ID", std::to_string(rsvp.id.tunnelId));
            field(3, "extended tunnel ID",
                  rsvp.id.extendedTunnelId.stringValue());
            field(3, "LSP ID", std::to_string(rsvp.id.lspId));
            field(3, "sender", rsvp.senderAddr.stringValue());
          },
          [&](const LspPing::LspPingPwInfo &pw) {
            field(2, "FEC", "pseudowire");
            field(3, "sender PE", pw.senderAddr.stringValue());
            field(3, "receiver PE", pw.receiverAddr.stringValue());
            field(3, "PW ID", std::to_string(pw.pwId));
            field(3, "PW type", std::to_string(pw.pwType));
          },
          [&](const NilFec &nil) {
            field(2, "FEC", "Nil FEC, label " + std::to_string(nil.label));
          },
      },
      fec);
}

// The fields under a TLV's own line.
void printDecoded(Fields &, std::monostate) {}

void printDecoded(Fields &field, const FecReport &r) {
  if (!r.valid) {
    field(2, "invalid", r.reason);
    return;
  }
  printFec(field, r.fec);
  std::string subTlvs;
  for (const std::string &name : r.subTlvs) {
    subTlvs += (subTlvs.empty() ? "" : " ") + name;
  }
  field(2, "sub-TLVs", subTlvs.empty() ? "none" : subTlvs);
}

void printDecoded(Fields &field, const IntfAndLabelStackReport &r) {
  if (!r.valid) {
    field(2, "invalid", r.reason);
    return;
  }
  field(2, "address", r.info.addr.stringValue());
  field(2, "interface", r.info.intf.stringValue());
  if (r.info.labelStack.empty()) {
    field(2, "label stack", "empty");
  }
  for (const Wirx::MplsLabelEntry &entry : r.info.labelStack) {
    field(2, "label", labelText(entry));
  }
}

void printDecoded(Fields &field, const DownstreamMappingReport &r) {
  if (!r.valid) {
    field(2, "invalid", r.reason);
    return;
  }
  const LspPing::LspPingDownstreamMappingInfo &ds = r.info;
  field(2, "MTU", std::to_string(ds.mtu));
  field(2, "address type", named<LspPing::LspPingAddrType>(ds.addrType));
  field(2, "flags", hex(ds.dsFlags, 2));
  field(2, "downstream address", ds.dsIpAddr.stringValue());
  field(2, "interface address", ds.dsIntfAddr.stringValue());
  field(2, "depth limit", std::to_string(ds.depthLimit));
  field(2, "multipath type",
        named<LspPing::LspPingMultipathType>(ds.multipathType));
  // Only a masked IP set is read; other forms leave both unset.
  if (!!ds.dsMultipathBaseAddr) {
    field(3, "base address", ds.dsMultipathBaseAddr.stringValue());
    field(3, "mask", bitsetHex(ds.dsMultipathBitset));
  }
  for (U8 i = 0; i < ds.labelStack.size; ++i) {
    const LspPing::LspPingDownstreamLabelEntry &entry =
        ds.labelStack.labelEntry[i];
    field(2, "label",
          std::to_string(entry.label().value()) + ", traffic class " +
              std::to_string(entry.tc()) +
              (entry.bos() ? ", bottom of stack" : "") + ", protocol " +
              withNumber(signalingProtocolName(entry.protocol()),
                         static_cast<U32>(entry.protocol())));
  }
}

void printText(std::ostream &out, U32 frameNumber, const FrameReport &r) {
  out << "frame " << frameNumber << ": ";
  if (r.notEcho) {
    out << "not an MPLS echo message (" << *r.notEcho << ")\n";
    return;
  }
  if (r.valid) {
    out << "valid\n";
  } else {
    out << "invalid: " << r.reason << "\n";
  }
  Fields field(out);
  if (const auto &h = r.header) {
    field(1, "version", std::to_string(h->version()));
    field(1, "global flags", hex(h->globalFlags(), 4));
    field(1, "message type", named<LspPing::LspPingMsgType>(h->messageType));
    field(1, "reply mode", named<LspPing::LspPingReplyMode>(h->replyMode));
    field(1, "return code", named<LspPing::LspPingReturnCode>(h->returnCode));
    field(1, "return subcode", std::to_string(h->returnSubcode));
    field(1, "sender handle", std::to_string(h->senderHandle()));
    field(1, "sequence number", std::to_string(h->sequenceNumber()));
    field(1, "sent", ntpText(h->tsSentSeconds(), h->tsSentmSeconds()));
    field(1, "received", ntpText(h->tsRcvdSeconds(), h->tsRcvdmSeconds()));
  }
  for (const TlvReport &tlv : r.tlvs) {
    field(1, "TLV",
          named<LspPing::LspPingTlvType>(tlv.type) + ", offset " +
              std::to_string(tlv.offset) + ", length " +
              std::to_string(tlv.totalLength));
    std::visit([&field](const auto &decoded) { printDecoded(field, decoded); },
               tlv.decoded);
  }
  field(1, "all TLVs supported", r.tlvSupported ? "yes" : "no");
}

// Null for a value the enumeration has no name for.
template <class E> nlohmann::json nameJson(U32 value) {
  const std::string_view name = nameOf<E>(value);
  return name.empty() ? nlohmann::json(nullptr) : nlohmann::json(name);
}

nlohmann::json headerJson(const LspPing::LspPingHdr &h) {
  return {
      {"version", h.version()},
      {"globalFlags", h.globalFlags()},
      {"messageType", h.messageType},
      {"messageTypeName", nameJson<LspPing::LspPingMsgType>(h.messageType)},
      {"replyMode", h.replyMode},
      {"replyModeName", nameJson<LspPing::LspPingReplyMode>(h.replyMode)},
      {"returnCode", h.returnCode},
      {"returnCodeName", nameJson<LspPing::LspPingReturnCode>(h.returnCode)},
      {"returnSubcode", h.returnSubcode},
      {"senderHandle", h.senderHandle()},
      {"sequenceNumber", h.sequenceNumber()},
      {"tsSentSeconds", h.tsSentSeconds()},
      {"tsSentmSeconds", h.tsSentmSeconds()},
      {"tsRcvdSeconds", h.tsRcvdSeconds()},
      {"tsRcvdmSeconds", h.tsRcvdmSeconds()},
  };
}

nlohmann::json fecJson(const Fec &fec) {
  return std::visit(
      Overloaded{
          [](const NoFec &) {
            return nlohmann::json{{"kind", "none"}};
          },
          [](const Wirx::IpGenPrefix &prefix) {
            return nlohmann::json{{"kind", "prefix"},
                                  {"prefix", prefix.stringValue()}};
          },
          [](const RsvpFec &rsvp) {
            return nlohmann::json{
                {"kind", "rsvp"},
                {"tunnelDst", rsvp.id.tunnelDst.stringValue()},
                {"tunnelId", rsvp.id.tunnelId},
                {"extendedTunnelId", rsvp.id.extendedTunnelId.stringValue()},
                {"lspId", rsvp.id.lspId},
                {"senderAddr", rsvp.senderAddr.stringValue()}};
          },
          [](const LspPing::LspPingPwInfo &pw) {
            return nlohmann::json{
                {"kind", "pseudowire"},
                {"senderAddr", pw.senderAddr.stringValue()},
                {"receiverAddr", pw.receiverAddr.stringValue()},
                {"pwId", pw.pwId},
                {"pwType", pw.pwType}};
          },
          [](const NilFec &nil) {
            return nlohmann::json{{"kind", "nil"}, {"label", nil.label}};
          },
      },
      fec);
}

// Null for a TLV the tool has no parser for: it gets no "decoded" key.
nlohmann::json decodedJson(std::monostate) { return nullptr; }

// A TLV its parser refused has only "valid" and "reason".
nlohmann::json decodedJson(const FecReport &r) {
  nlohmann::json j = {{"valid", r.valid}, {"reason", r.reason}};
  if (r.valid) {
    j["fec"] = fecJson(r.fec);
    j["subTlvs"] = r.subTlvs;
  }
  return j;
}

nlohmann::json decodedJson(const IntfAndLabelStackReport &r) {
  nlohmann::json j = {{"valid", r.valid}, {"reason", r.reason}};
  if (!r.valid) {
    return j;
  }
  j["addr"] = r.info.addr.stringValue();
  j["intf"] = r.info.intf.stringValue();
  j["labelStack"] = labelStackJson(r.info.labelStack);
  return j;
}

nlohmann::json decodedJson(const DownstreamMappingReport &r) {
  nlohmann::json j = {{"valid", r.valid}, {"reason", r.reason}};
  if (!r.valid) {
    return j;
  }
  const LspPing::LspPingDownstreamMappingInfo &ds = r.info;
  nlohmann::json labels = nlohmann::json::array();
  for (U8 i = 0; i < ds.labelStack.size; ++i) {
    const LspPing::LspPingDownstreamLabelEntry &entry =
        ds.labelStack.labelEntry[i];
    const std::string_view protocolName =
        signalingProtocolName(entry.protocol());
    labels.push_back({{"label", entry.label().value()},
                      {"tc", entry.tc()},
                      {"bos", entry.bos()},
                      {"protocol", static_cast<U32>(entry.protocol())},
                      {"protocolName", protocolName.empty()
                                           ? nlohmann::json(nullptr)
                                           : nlohmann::json(protocolName)}});
  }
  j["mtu"] = ds.mtu;
  j["addrType"] = ds.addrType;
  j["addrTypeName"] = nameJson<LspPing::LspPingAddrType>(ds.addrType);
  j["dsFlags"] = ds.dsFlags;
  j["dsIpAddr"] = ds.dsIpAddr.stringValue();
  j["dsIntfAddr"] = ds.dsIntfAddr.stringValue();
  j["multipathType"] = ds.multipathType;
  j["multipathTypeName"] =
      nameJson<LspPing::LspPingMultipathType>(ds.multipathType);
  j["depthLimit"] = ds.depthLimit;
  j["dsMultipathBaseAddr"] =
      !!ds.dsMultipathBaseAddr
          ? nlohmann::json(ds.dsMultipathBaseAddr.stringValue())
          : nlohmann::json(nullptr);
  j["dsMultipathBitset"] = bitsetHex(ds.dsMultipathBitset);
  j["labelStack"] = labels;
  return j;
}

void printJson(std::ostream &out, const std::string &file, U32 frameNumber,
               const FrameReport &r) {
  nlohmann::json tlvs = nlohmann::json::array();
  for (const TlvReport &tlv : r.tlvs) {
    nlohmann::json entry = {
        {"type", tlv.type},
        {"typeName", nameJson<LspPing::LspPingTlvType>(tlv.type)},
        {"offset", tlv.offset},
        {"length", tlv.totalLength}};
    nlohmann::json decoded =
        std::visit([](const auto &d) { return decodedJson(d); }, tlv.decoded);
    if (!decoded.is_null()) {
      entry["decoded"] = std::move(decoded);
    }
    tlvs.push_back(std::move(entry));
  }
  const nlohmann::json line = {
      {"file", file},
      {"frame", frameNumber},
      {"valid", r.valid},
      {"reason",
       r.notEcho ? "not an MPLS echo message: " + *r.notEcho : r.reason},
      {"header", r.header ? headerJson(*r.header) : nullptr},
      {"tlvs", tlvs},
      {"tlvSupported", r.tlvSupported},
  };
  // Replaces rather than throws on bytes that are not UTF-8.
  out << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
      << "\n";
}

// Decodes one file: exitNo when a frame is no valid echo message,
// exitError when the file cannot be read as an Ethernet capture.
int decodeFile(const std::string &path, bool json) {
  PcapReader reader(path);
  if (!reader.ok()) {
    std::cerr << "lspping: " << reader.error() << "\n";
    return exitError;
  }
  if (!json) {
    std::cout << inputName(path) << "\n";
  }
  int status = exitOk;
  std::span<const U8> frame;
  U32 frameNumber = 0;
  while (reader.next(frame)) {
    const FrameReport report = decodeFrame(frame);
    ++frameNumber;
    if (report.notEcho || !report.valid) {
      status = exitNo;
    }
    if (json) {
      printJson(std::cout, path, frameNumber, report);
    } else {
      printText(std::cout, frameNumber, report);
    }
  }
  if (!reader.ok()) {
    std::cerr << "lspping: " << reader.error() << "\n";
    return exitError;
  }
  return status;
}

} // namespace

void addDecodeCommand(CLI::App &app, int &status) {
  struct Options {
    std::vector<std::string> files;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App *cmd = app.add_subcommand(
      "decode", "Decode the MPLS echo messages in pcap files of Ethernet "
                "frames. Frames are numbered from 1 in each file.");
  cmd->add_flag("--json", options->json,
                "One JSON object per frame and line, keys file, frame, "
                "valid, reason, header, tlvs and tlvSupported; a TLV the "
                "tool reads further has its findings under decoded");
  cmd->add_option("FILE", options->files,
                  "pcap capture files, '-' for standard input")
      ->required();
  cmd->callback([options, &status] {
    // Every file is decoded, whatever became of the ones before.
    status = exitOk;
    for (const std::string &path : options->files) {
      status = std::max(status, decodeFile(path, options->json));
    }
  });
}

} // namespace LspPingTool
