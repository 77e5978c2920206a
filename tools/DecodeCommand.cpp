#include "tools/DecodeCommand.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingDownstreamMappingTlvParser.h"
#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingIntfAndLabelStackTlvParser.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTargetFecTlvParser.h"
#include "LspPing/LspPingTlvHdr.h"
#include "LspPing/LspPingTlvType.h"
#include "MplsUtils/EthPktParser.h"
#include "Wirx/Pkt.h"
#include "tools/ExitStatus.h"
#include "tools/Pcap.h"

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

std::string fecText(const Fec &fec) {
  return std::visit(
      Overloaded{
          [](const NoFec &) { return std::string("no usable FEC"); },
          [](const Wirx::IpGenPrefix &prefix) {
            return "prefix " + prefix.stringValue();
          },
          [](const RsvpFec &rsvp) {
            return "rsvp tunnelDst " + rsvp.id.tunnelDst.stringValue() +
                   " tunnelId " + std::to_string(rsvp.id.tunnelId) +
                   " extendedTunnelId " +
                   rsvp.id.extendedTunnelId.stringValue() + " lspId " +
                   std::to_string(rsvp.id.lspId) + " senderAddr " +
                   rsvp.senderAddr.stringValue();
          },
          [](const LspPing::LspPingPwInfo &pw) {
            return "pseudowire senderAddr " + pw.senderAddr.stringValue() +
                   " receiverAddr " + pw.receiverAddr.stringValue() + " pwId " +
                   std::to_string(pw.pwId) + " pwType " +
                   std::to_string(pw.pwType);
          },
          [](const NilFec &nil) {
            return "nil label " + std::to_string(nil.label);
          },
      },
      fec);
}

// The multipath bytes behind the base address, in hex.
std::string bitsetHex(const LspPing::LspPingMultipathBitset &bitset) {
  std::string hex;
  for (U32 i = 0; i < bitset.size; ++i) {
    char byte[3];
    std::snprintf(byte, sizeof byte, "%02x", bitset.bitset[i]);
    hex += byte;
  }
  return hex;
}

// The lines under a TLV's own line, indented below it.
void printDecoded(std::ostream &, std::monostate) {}

void printDecoded(std::ostream &out, const FecReport &r) {
  if (!r.valid) {
    out << "    target FEC: invalid: " << r.reason << "\n";
    return;
  }
  out << "    target FEC: " << fecText(r.fec) << "\n";
  out << "    sub-TLVs:";
  for (const std::string &name : r.subTlvs) {
    out << " " << name;
  }
  out << (r.subTlvs.empty() ? " none\n" : "\n");
}

void printDecoded(std::ostream &out, const IntfAndLabelStackReport &r) {
  out << "    interface and label stack: ";
  if (!r.valid) {
    out << "invalid: " << r.reason << "\n";
    return;
  }
  out << "addr " << r.info.addr.stringValue() << " intf "
      << r.info.intf.stringValue() << " labelStack "
      << r.info.labelStack.stringValue() << "\n";
}

void printDecoded(std::ostream &out, const DownstreamMappingReport &r) {
  out << "    downstream mapping: ";
  if (!r.valid) {
    out << "invalid: " << r.reason << "\n";
    return;
  }
  const LspPing::LspPingDownstreamMappingInfo &ds = r.info;
  out << "mtu " << ds.mtu << " addrType " << U32{ds.addrType} << " dsFlags "
      << U32{ds.dsFlags} << " dsIpAddr " << ds.dsIpAddr.stringValue()
      << " dsIntfAddr " << ds.dsIntfAddr.stringValue() << " depthLimit "
      << U32{ds.depthLimit} << "\n";
  out << "    multipath: type " << U32{ds.multipathType};
  // Only a masked IP set is read; other forms leave both unset.
  if (!!ds.dsMultipathBaseAddr) {
    out << " base " << ds.dsMultipathBaseAddr.stringValue() << " bitset "
        << bitsetHex(ds.dsMultipathBitset);
  }
  out << "\n";
  for (U8 i = 0; i < ds.labelStack.size; ++i) {
    const LspPing::LspPingDownstreamLabelEntry &entry =
        ds.labelStack.labelEntry[i];
    out << "    label " << entry.label().value() << " tc " << U32{entry.tc()}
        << " bos " << (entry.bos() ? "true" : "false") << " protocol "
        << static_cast<U32>(entry.protocol()) << "\n";
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
  if (r.header) {
    out << "  header: " << r.header->stringValue() << "\n";
  }
  for (const TlvReport &tlv : r.tlvs) {
    out << "  tlv type " << tlv.type << " offset " << tlv.offset << " length "
        << tlv.totalLength << "\n";
    std::visit([&out](const auto &decoded) { printDecoded(out, decoded); },
               tlv.decoded);
  }
  out << "  tlvSupported: " << (r.tlvSupported ? "true" : "false") << "\n";
}

nlohmann::json headerJson(const LspPing::LspPingHdr &h) {
  return {
      {"version", h.version()},
      {"globalFlags", h.globalFlags()},
      {"messageType", h.messageType},
      {"replyMode", h.replyMode},
      {"returnCode", h.returnCode},
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
  nlohmann::json labels = nlohmann::json::array();
  for (const Wirx::MplsLabel label : r.info.labelStack) {
    labels.push_back(label.value());
  }
  j["addr"] = r.info.addr.stringValue();
  j["intf"] = r.info.intf.stringValue();
  j["labelStack"] = labels;
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
    labels.push_back({{"label", entry.label().value()},
                      {"tc", entry.tc()},
                      {"bos", entry.bos()},
                      {"protocol", static_cast<U32>(entry.protocol())}});
  }
  j["mtu"] = ds.mtu;
  j["addrType"] = ds.addrType;
  j["dsFlags"] = ds.dsFlags;
  j["dsIpAddr"] = ds.dsIpAddr.stringValue();
  j["dsIntfAddr"] = ds.dsIntfAddr.stringValue();
  j["multipathType"] = ds.multipathType;
  j["depthLimit"] = ds.depthLimit;
  j["dsMultipathBaseAddr"] =
      !!ds.dsMultipathBaseAddr
          ? nlohmann::json(ds.dsMultipathBaseAddr.stringValue())
          : nlohmann::json(nullptr);
  j["dsMultipathBitset"] = bitsetHex(ds.dsMultipathBitset);
  j["labelStack"] = labels;
  return j;
}

void printJson(std::ostream &out, U32 frameNumber, const FrameReport &r) {
  nlohmann::json tlvs = nlohmann::json::array();
  for (const TlvReport &tlv : r.tlvs) {
    nlohmann::json entry = {{"type", tlv.type},
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
    std::cout << path << "\n";
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
      printJson(std::cout, frameNumber, report);
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
                "One JSON object per frame and line, keys frame, valid, "
                "reason, header, tlvs and tlvSupported; a TLV the tool reads "
                "further has its findings under decoded");
  cmd->add_option("FILE", options->files, "pcap capture files")->required();
  cmd->callback([options, &status] {
    // Every file is decoded, whatever became of the ones before.
    status = exitOk;
    for (const std::string &path : options->files) {
      status = std::max(status, decodeFile(path, options->json));
    }
  });
}

} // namespace LspPingTool
