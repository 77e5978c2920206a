#include "tools/DecodeCommand.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTlvHdr.h"
#include "MplsUtils/EthPktParser.h"
#include "Wirx/Pkt.h"
#include "tools/Pcap.h"

namespace LspPingTool {

namespace {

using Orv::U32;
using Orv::U8;

struct TlvReport {
  Orv::U16 type;
  U32 offset;      // from the start of the frame
  U32 totalLength; // header, value and padding
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
    report.tlvs.push_back({tlv->type(), offset, tlv->totalLength()});
  }
  report.tlvSupported = parser->tlvSupported();
  return report;
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

void printJson(std::ostream &out, U32 frameNumber, const FrameReport &r) {
  nlohmann::json tlvs = nlohmann::json::array();
  for (const TlvReport &tlv : r.tlvs) {
    tlvs.push_back({{"type", tlv.type},
                    {"offset", tlv.offset},
                    {"length", tlv.totalLength}});
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

// Decodes one file; false when it could not be read as an Ethernet capture.
bool decodeFile(const std::string &path, bool json) {
  PcapReader reader(path);
  if (!reader.ok()) {
    // libpcap's message names the file already.
    std::cerr << "lspping: " << reader.error() << "\n";
    return false;
  }
  if (reader.linkType() != DLT_EN10MB) {
    const char *name = pcap_datalink_val_to_name(reader.linkType());
    std::cerr << "lspping: " << path << ": link type "
              << (name ? name : std::to_string(reader.linkType()))
              << " is not Ethernet\n";
    return false;
  }
  if (!json) {
    std::cout << path << "\n";
  }
  std::span<const U8> frame;
  U32 frameNumber = 0;
  while (reader.next(frame)) {
    const FrameReport report = decodeFrame(frame);
    ++frameNumber;
    if (json) {
      printJson(std::cout, frameNumber, report);
    } else {
      printText(std::cout, frameNumber, report);
    }
  }
  if (!reader.error().empty()) {
    std::cerr << "lspping: " << path << ": " << reader.error() << "\n";
    return false;
  }
  return true;
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
                "reason, header, tlvs and tlvSupported");
  cmd->add_option("FILE", options->files, "pcap capture files")->required();
  cmd->callback([options, &status] {
    status = 0;
    for (const std::string &path : options->files) {
      if (!decodeFile(path, options->json)) {
        status = 1;
      }
    }
  });
}

} // namespace LspPingTool
