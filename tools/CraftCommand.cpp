#include "tools/CraftCommand.h"

#include <charconv>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingDownstreamLabelStack.h"
#include "LspPing/LspPingMsgType.h"
#include "LspPing/LspPingMultipathBitset.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingReplyMode.h"
#include "LspPing/LspPingTlvType.h"
#include "LspPing/NtpTime.h"
#include "Wirx/EthHdr.h"
#include "Wirx/IpGenPrefix.h"
#include "Wirx/MplsLabelStack.h"
#include "Wirx/Pkt.h"
#include "tools/ExitStatus.h"
#include "tools/Pcap.h"
#include "tools/SignalingProtocolName.h"

namespace LspPingTool {

namespace {

using Orv::U16;
using Orv::U32;
using Orv::U8;

// Every option value is checked when it is parsed: a value that does not
// read gets a one-line error naming its form, and no frame is built.

std::optional<U32> number(std::string_view text, U32 max) {
  U32 value = 0;
  const auto [end, ec] =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || value > max) {
    return std::nullopt;
  }
  return value;
}

// Splits "head/key=value/key=value" at '/'; false when a part after the
// head is not a key=value pair whose key `take` accepts.
template <class Take>
bool keyValues(std::string_view text, std::string_view &head, Take take) {
  std::size_t slash = text.find('/');
  head = text.substr(0, slash);
  while (slash != std::string_view::npos) {
    text.remove_prefix(slash + 1);
    slash = text.find('/');
    const std::string_view part = text.substr(0, slash);
    const std::size_t eq = part.find('=');
    if (eq == std::string_view::npos ||
        !take(part.substr(0, eq), part.substr(eq + 1))) {
      return false;
    }
  }
  return true;
}

// --label LABEL[/ttl=N][/tc=N]
struct LabelArg {
  U32 label = 0;
  U8 ttl = 255;
  U8 tc = 0;
};

std::optional<LabelArg> labelArg(std::string_view text) {
  LabelArg arg;
  std::string_view head;
  const bool ok = keyValues(text, head, [&](auto key, auto value) {
    if (key == "ttl") {
      const auto ttl = number(value, 255);
      arg.ttl = ttl ? U8(*ttl) : arg.ttl;
      return ttl.has_value();
    }
    if (key == "tc") {
      const auto tc = number(value, 7);
      arg.tc = tc ? U8(*tc) : arg.tc;
      return tc.has_value();
    }
    return false;
  });
  const auto label = number(head, Wirx::MplsLabel::max);
  if (!ok || !label) {
    return std::nullopt;
  }
  arg.label = *label;
  return arg;
}

// --ds-label LABEL[/tc=N][/proto=NAME]
struct DsLabelArg {
  U32 label = 0;
  U8 tc = 0;
  LspPing::LspPingDownstreamSignalingProtocol protocol = LspPing::
      LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolUnknown;
};

std::optional<DsLabelArg> dsLabelArg(std::string_view text) {
  DsLabelArg arg;
  std::string_view head;
  const bool ok = keyValues(text, head, [&](auto key, auto value) {
    if (key == "tc") {
      const auto tc = number(value, 7);
      arg.tc = tc ? U8(*tc) : arg.tc;
      return tc.has_value();
    }
    if (key == "proto") {
      const auto protocol = signalingProtocol(value);
      arg.protocol = protocol ? *protocol : arg.protocol;
      return protocol.has_value();
    }
    return false;
  });
  const auto label = number(head, Wirx::MplsLabel::max);
  if (!ok || !label) {
    return std::nullopt;
  }
  arg.label = *label;
  return arg;
}

// --fec KIND[=VALUE]
struct FecArg {
  enum class Kind { none, ldp, rsvp, sr, nil } kind = Kind::none;
  Wirx::IpGenPrefix prefix;
  LspPing::LspPingSrIgpProtocol igp = LspPing::LspPingSrIgpProtocol::isis;
  Wirx::IpAddr endPoint;
  U16 tunnelId = 0;
  Wirx::IpAddr extendedTunnelId;
  Wirx::IpAddr sender;
  U16 lspId = 0;
  U32 label = 0;
};

std::vector<std::string_view> commaParts(std::string_view text) {
  std::vector<std::string_view> parts;
  for (std::size_t comma; (comma = text.find(',')) != std::string_view::npos;
       text.remove_prefix(comma + 1)) {
    parts.push_back(text.substr(0, comma));
  }
  parts.push_back(text);
  return parts;
}

std::optional<Wirx::IpAddr> ipv4(std::string_view text) {
  return Wirx::IpAddr::fromString(text);
}

// A prefix of the given family; an address alone is a host prefix.
std::optional<Wirx::IpGenPrefix> prefixOf(std::string_view text,
                                          bool ipv4Only) {
  std::optional<Wirx::IpGenPrefix> prefix =
      text.find('/') == std::string_view::npos
          ? std::nullopt
          : Wirx::IpGenPrefix::fromString(text);
  if (!prefix) {
    const auto addr = Wirx::IpGenAddr::fromString(text);
    if (!addr || !*addr) {
      return std::nullopt;
    }
    prefix = Wirx::IpGenPrefix(*addr, Wirx::IpGenPrefix::maxLength(addr->af()));
  }
  if (!*prefix || (ipv4Only && !prefix->addr().isIpv4())) {
    return std::nullopt;
  }
  return prefix;
}

std::optional<FecArg> fecArg(std::string_view text) {
  FecArg arg;
  const std::size_t eq = text.find('=');
  const std::string_view kind = text.substr(0, eq);
  const std::vector<std::string_view> args =
      eq == std::string_view::npos ? std::vector<std::string_view>{}
                                   : commaParts(text.substr(eq + 1));
  if (kind == "none" && args.empty()) {
    return arg;
  }
  if (kind == "ldp" && args.size() == 1) {
    const auto prefix = prefixOf(args[0], true);
    if (!prefix) {
      return std::nullopt;
    }
    arg.kind = FecArg::Kind::ldp;
    arg.prefix = *prefix;
    return arg;
  }
  if (kind == "sr" && (args.size() == 1 || args.size() == 2)) {
    const auto prefix = prefixOf(args[0], false);
    if (!prefix ||
        (args.size() == 2 && args[1] != "isis" && args[1] != "ospf")) {
      return std::nullopt;
    }
    arg.kind = FecArg::Kind::sr;
    arg.prefix = *prefix;
    if (args.size() == 2 && args[1] == "ospf") {
      arg.igp = LspPing::LspPingSrIgpProtocol::ospf;
    }
    return arg;
  }
  if (kind == "rsvp" && args.size() == 5) {
    const auto endPoint = ipv4(args[0]);
    const auto tunnelId = number(args[1], 0xFFFF);
    const auto extendedTunnelId = ipv4(args[2]);
    const auto sender = ipv4(args[3]);
    const auto lspId = number(args[4], 0xFFFF);
    if (!endPoint || !tunnelId || !extendedTunnelId || !sender || !lspId) {
      return std::nullopt;
    }
    arg.kind = FecArg::Kind::rsvp;
    arg.endPoint = *endPoint;
    arg.tunnelId = U16(*tunnelId);
    arg.extendedTunnelId = *extendedTunnelId;
    arg.sender = *sender;
    arg.lspId = U16(*lspId);
    return arg;
  }
  if (kind == "nil" && args.size() == 1) {
    const auto label = number(args[0], Wirx::MplsLabel::max);
    if (!label) {
      return std::nullopt;
    }
    arg.kind = FecArg::Kind::nil;
    arg.label = *label;
    return arg;
  }
  return std::nullopt;
}

// --ds-multipath BASE,HEX: a masked IP set, its mask a multiple of 4 bytes.
struct MultipathArg {
  Wirx::IpGenAddr base;
  std::vector<U8> mask;
};

constexpr std::size_t maxMultipathBytes = 64;

std::optional<MultipathArg> multipathArg(std::string_view text) {
  const std::vector<std::string_view> parts = commaParts(text);
  if (parts.size() != 2) {
    return std::nullopt;
  }
  MultipathArg arg;
  const auto base = Wirx::IpGenAddr::fromString(parts[0]);
  const std::string_view hex = parts[1];
  if (!base || !*base || hex.empty() || hex.size() % 8 != 0 ||
      hex.size() / 2 > maxMultipathBytes) {
    return std::nullopt;
  }
  arg.base = *base;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    U8 byte = 0;
    const auto [end, ec] =
        std::from_chars(hex.data() + i, hex.data() + i + 2, byte, 16);
    if (ec != std::errc() || end != hex.data() + i + 2) {
      return std::nullopt;
    }
    arg.mask.push_back(byte);
  }
  return arg;
}

// A validator from a reader: the value is refused, with `form` in the
// message, when the reader makes nothing of it.
template <class Read>
CLI::Validator readable(Read read, const std::string &form,
                        const std::string &what) {
  return CLI::Validator(
      [read, what, form](std::string &value) -> std::string {
        return read(value)
                   ? ""
                   : "'" + value + "' is not " + what + " (" + form + ")";
      },
      form);
}

CLI::Validator ipAddress() {
  return readable(
      [](std::string_view text) {
        const auto addr = Wirx::IpGenAddr::fromString(text);
        return addr && !!*addr;
      },
      "ADDRESS", "an IPv4 or IPv6 address");
}

CLI::Validator macAddress() {
  return readable(
      [](std::string_view text) {
        return Wirx::EthAddr::fromString(text).has_value();
      },
      "MAC", "a MAC address");
}

struct Options {
  std::string file;
  std::string src = "10.0.0.1";
  std::string dst;
  std::string srcMac = "02:00:00:00:00:01";
  std::string dstMac = "02:00:00:00:00:02";
  std::vector<std::string> labels;
  U16 srcPort = 49152;
  U16 dstPort = LspPing::LspPingConstant::lspPingUdpPort;
  U32 senderHandle = 1;
  U32 sequence = 1;
  U32 count = 1;
  std::optional<U32> timestamp;
  std::string fec = "none";
  std::string dsMap;
  std::string dsIntf;
  U16 dsMtu = 1500;
  std::vector<std::string> dsLabels;
  std::string dsMultipath;
};

// What the options describe, read and checked as a whole.
struct Plan {
  Wirx::IpGenAddr src;
  Wirx::IpGenAddr dst;
  Wirx::EthAddr srcMac;
  Wirx::EthAddr dstMac;
  std::vector<LabelArg> labels;
  FecArg fec;
  bool dsMap = false;
  Wirx::IpGenAddr dsAddr;
  Wirx::IpGenAddr dsIntf;
  LspPing::LspPingDownstreamLabelStack dsLabels;
  std::optional<MultipathArg> dsMultipath;
};

// The echo requests' default destination: the loopback range of RFC 8029,
// in the source's family.
Wirx::IpGenAddr loopback(const Wirx::IpGenAddr &src) {
  return *Wirx::IpGenAddr::fromString(src.isIpv4() ? "127.0.0.1"
                                                   : "::ffff:127.0.0.1");
}

// Checks what no single option can; the error text, or nothing.
std::optional<std::string> plan(const Options &o, Plan &p) {
  p.src = *Wirx::IpGenAddr::fromString(o.src);
  p.dst = o.dst.empty() ? loopback(p.src) : *Wirx::IpGenAddr::fromString(o.dst);
  if (p.src.af() != p.dst.af()) {
    return "--src and --dst must be of one family";
  }
  p.srcMac = *Wirx::EthAddr::fromString(o.srcMac);
  p.dstMac = *Wirx::EthAddr::fromString(o.dstMac);
  // What decode, or a router, could not read back is not written.
  if (o.labels.size() > Wirx::MplsLabelStack::capacity) {
    return "--label: " + std::to_string(o.labels.size()) +
           " labels, more than the " +
           std::to_string(Wirx::MplsLabelStack::capacity) +
           " a label stack holds";
  }
  for (const std::string &label : o.labels) {
    p.labels.push_back(*labelArg(label));
  }
  p.fec = *fecArg(o.fec);
  if (o.dsMap.empty()) {
    if (!o.dsIntf.empty() || !o.dsLabels.empty() || !o.dsMultipath.empty()) {
      return "--ds-intf, --ds-label and --ds-multipath need --ds-map";
    }
    return std::nullopt;
  }
  p.dsMap = true;
  p.dsAddr = *Wirx::IpGenAddr::fromString(o.dsMap);
  p.dsIntf =
      o.dsIntf.empty() ? p.dsAddr : *Wirx::IpGenAddr::fromString(o.dsIntf);
  if (p.dsIntf.af() != p.dsAddr.af()) {
    return "--ds-map and --ds-intf must be of one family";
  }
  if (o.dsLabels.empty()) {
    return "--ds-map needs at least one --ds-label";
  }
  constexpr std::size_t maxDsLabels =
      std::numeric_limits<decltype(p.dsLabels.size)>::max();
  if (o.dsLabels.size() > maxDsLabels) {
    return "--ds-label: " + std::to_string(o.dsLabels.size()) +
           " labels, more than the " + std::to_string(maxDsLabels) +
           " a downstream mapping holds";
  }
  for (std::size_t i = 0; i < o.dsLabels.size(); ++i) {
    const DsLabelArg arg = *dsLabelArg(o.dsLabels[i]);
    p.dsLabels.labelEntryIs(U8(i),
                            LspPing::LspPingDownstreamLabelEntry::fromLabel(
                                Wirx::MplsLabel(arg.label), arg.tc,
                                i + 1 == o.dsLabels.size(), arg.protocol));
  }
  p.dsLabels.size = U8(o.dsLabels.size());
  if (!o.dsMultipath.empty()) {
    p.dsMultipath = multipathArg(o.dsMultipath);
    if (p.dsMultipath->base.af() != p.dsAddr.af()) {
      return "--ds-multipath's base address must be of --ds-map's family";
    }
  }
  return std::nullopt;
}

void addFec(LspPing::LspPingPktGen &gen, const FecArg &fec) {
  gen.addLspPingTlvHdr(U16(LspPing::LspPingTlvType::TargetFecStack), 0);
  switch (fec.kind) {
  case FecArg::Kind::none:
    break;
  case FecArg::Kind::ldp:
    gen.addLspPingLdpIpv4SubTlv(fec.prefix.addr().v4(), fec.prefix.length());
    break;
  case FecArg::Kind::rsvp:
    gen.addLspPingRsvpIpv4SubTlv(fec.endPoint, fec.tunnelId,
                                 fec.extendedTunnelId, fec.sender, fec.lspId);
    break;
  case FecArg::Kind::sr:
    if (fec.prefix.addr().isIpv4()) {
      gen.addLspPingSrIpv4SubTlv(fec.prefix.addr().v4(), fec.prefix.length(),
                                 fec.igp);
    } else {
      gen.addLspPingSrIpv6SubTlv(fec.prefix.addr().v6(), fec.prefix.length(),
                                 fec.igp);
    }
    break;
  case FecArg::Kind::nil:
    gen.addLspPingNilFecSubTlv(fec.label);
    break;
  }
}

void addDsMap(LspPing::LspPingPktGen &gen, const Options &o, const Plan &p) {
  LspPing::LspPingMultipathBitset bitset;
  Wirx::IpGenAddr base;
  if (p.dsMultipath) {
    bitset = LspPing::LspPingMultipathBitset(U32(p.dsMultipath->mask.size()));
    for (std::size_t i = 0; i < p.dsMultipath->mask.size(); ++i) {
      bitset.bitsetIs(U32(i), p.dsMultipath->mask[i]);
    }
    base = p.dsMultipath->base;
  }
  gen.addLspPingDownstreamMappingTlv(
      o.dsMtu,
      p.dsAddr.isIpv4() ? LspPing::LspPingAddrType::ipv4Numbered
                        : LspPing::LspPingAddrType::ipv6Numbered,
      0, p.dsAddr, p.dsIntf,
      p.dsMultipath ? LspPing::LspPingMultipathType::maskedIpSetMultipath
                    : LspPing::LspPingMultipathType::noMultipath,
      0, base, bitset, p.dsLabels);
}

// One echo request, the way a ping client builds it: IP TTL 1, reply by
// UDP, lengths and checksums filled in after the FEC stack and again after
// the downstream mapping.
Orv::Ptr<Wirx::Pkt> buildRequest(const Options &o, const Plan &p, U32 sequence,
                                 const LspPing::NtpTimeU64 &sent) {
  auto pkt = Wirx::Pkt::make();
  auto gen = LspPing::lspPingPktGenFactory(pkt);
  gen->initializedIs(true);
  const bool v4 = p.src.isIpv4();
  const U16 etherType = !p.labels.empty() ? Wirx::EthHdr::etherTypeMpls
                        : v4              ? Wirx::EthHdr::etherTypeIpv4
                                          : Wirx::EthHdr::etherTypeIpv6;
  gen->addEtherHdr(p.dstMac, p.srcMac, etherType);
  for (std::size_t i = 0; i < p.labels.size(); ++i) {
    gen->addMplsHdr(p.labels[i].label, p.labels[i].tc, i + 1 == p.labels.size(),
                    p.labels[i].ttl);
  }
  constexpr U8 udp = 17;
  if (v4) {
    gen->addIpHdr(p.src.v4(), p.dst.v4(), 1, udp);
  } else {
    gen->addIp6Hdr(p.src.v6(), p.dst.v6(), 1, udp);
  }
  gen->addUdpHdr(o.srcPort, o.dstPort);
  gen->addLspPingHdr(1, 0, U8(LspPing::LspPingMsgType::MplsEchoRequest),
                     U8(LspPing::LspPingReplyMode::ReplyIpUdp), 0, 0,
                     o.senderHandle, sequence, sent.seconds, sent.microSeconds,
                     0, 0);
  addFec(*gen, p.fec);
  gen->computeHdrLenChecksum();
  if (p.dsMap) {
    addDsMap(*gen, o, p);
    gen->computeHdrLenChecksum();
  }
  return pkt;
}

int craft(const Options &o) {
  Plan p;
  if (const auto error = plan(o, p)) {
    std::cerr << "lspping: craft: " << *error << "\n";
    return exitError;
  }
  PcapWriter writer(o.file);
  LspPing::NtpTimeU64 sent = LspPing::NtpTime::ntpTime();
  if (o.timestamp) {
    sent = {*o.timestamp, 0};
  }
  constexpr std::uint64_t unixToNtp = 2208988800u;
  for (U32 i = 0; i < o.count && writer.ok(); ++i) {
    // One request a second, as a client sends them by default.
    const LspPing::NtpTimeU64 stamp{sent.seconds + i, sent.microSeconds};
    const auto pkt = buildRequest(o, p, o.sequence + i, stamp);
    const auto micros =
        U32((std::uint64_t{stamp.microSeconds} * 1000000) >> 32);
    writer.write(std::span<const U8>(pkt->data(), pkt->frontBytes()),
                 U32(stamp.seconds - unixToNtp), micros);
  }
  if (!writer.close()) {
    std::cerr << "lspping: " << writer.error() << "\n";
    return exitError;
  }
  return exitOk;
}

} // namespace

void addCraftCommand(CLI::App &app, int &status) {
  auto o = std::make_shared<Options>();
  CLI::App *cmd = app.add_subcommand(
      "craft",
      "Write MPLS echo requests to a pcap file of Ethernet frames, built by "
      "the library's packet generator: Ethernet, the label stack, IPv4 (with "
      "Router Alert, TTL 1) or IPv6 (hop limit 1), UDP, the echo header "
      "(reply by UDP) and a Target FEC Stack, optionally a Downstream "
      "Mapping.");
  cmd->add_option("FILE", o->file, "pcap file to write, '-' for stdout")
      ->required();
  cmd->add_option("--src", o->src, "source IPv4 or IPv6 address")
      ->check(ipAddress())
      ->capture_default_str();
  cmd->add_option("--dst", o->dst,
                  "destination address, of --src's family [default: "
                  "127.0.0.1 or ::ffff:127.0.0.1]")
      ->check(ipAddress());
  cmd->add_option("--src-mac", o->srcMac, "source MAC address")
      ->check(macAddress())
      ->capture_default_str();
  cmd->add_option("--dst-mac", o->dstMac, "destination MAC address")
      ->check(macAddress())
      ->capture_default_str();
  cmd->add_option(
         "--label", o->labels,
         "a label stack entry, outermost first, repeatable: LABEL (0 to "
         "1048575) with /ttl=N (0 to 255, default 255) and /tc=N (0 to 7, "
         "default 0), e.g. --label 100 --label 200/ttl=64/tc=3; the last one "
         "is the bottom of the stack, 16 at most. Without labels the frame "
         "is plain IP")
      ->check(readable(labelArg, "LABEL[/ttl=N][/tc=N]", "a label entry"))
      ->take_all();
  cmd->add_option("--src-port", o->srcPort, "UDP source port")
      ->capture_default_str();
  cmd->add_option("--dst-port", o->dstPort, "UDP destination port")
      ->capture_default_str();
  cmd->add_option("--sender-handle", o->senderHandle, "sender's handle")
      ->capture_default_str();
  cmd->add_option("--sequence", o->sequence,
                  "sequence number of the first request")
      ->capture_default_str();
  cmd->add_option("--count", o->count,
                  "number of requests, with consecutive sequence numbers and "
                  "sent one second apart")
      ->check(CLI::Range(1u, 1000000u))
      ->capture_default_str();
  cmd->add_option("--timestamp", o->timestamp,
                  "sent time stamp of the first request, NTP seconds "
                  "(fraction 0) [default: now]");
  cmd->add_option("--fec", o->fec,
                  "the Target FEC Stack: none (the TLV with no sub-TLV), "
                  "ldp=PREFIX (IPv4), rsvp=END_POINT,TUNNEL_ID,"
                  "EXTENDED_TUNNEL_ID,SENDER,LSP_ID (IPv4 addresses, 16-bit "
                  "ids), sr=PREFIX[,isis|ospf] (IPv4 or IPv6, default isis) or "
                  "nil=LABEL; an address alone is a host prefix")
      ->check(readable(fecArg, "KIND[=VALUE]", "a FEC"))
      ->capture_default_str();
  cmd->add_option("--ds-map", o->dsMap,
                  "add a Downstream Mapping TLV for this downstream address "
                  "(IPv4 or IPv6, numbered)")
      ->check(ipAddress());
  cmd->add_option("--ds-intf", o->dsIntf,
                  "downstream interface address [default: --ds-map]")
      ->check(ipAddress());
  cmd->add_option("--ds-mtu", o->dsMtu, "downstream MTU")
      ->capture_default_str();
  cmd->add_option(
         "--ds-label", o->dsLabels,
         "a downstream label, top first, repeatable, at least one with "
         "--ds-map: LABEL with /tc=N and /proto=unknown|static|bgp|ldp|"
         "rsvp|ospf|isis (default unknown); the last one is the bottom, 255 "
         "at most")
      ->check(readable(dsLabelArg, "LABEL[/tc=N][/proto=NAME]",
                       "a downstream label"))
      ->take_all();
  cmd->add_option("--ds-multipath", o->dsMultipath,
                  "masked IP set multipath: BASE,MASK with BASE an address of "
                  "--ds-map's family and MASK hex, 4 to 64 bytes in whole "
                  "words [default: no multipath]")
      ->check(readable(multipathArg, "BASE,HEXMASK", "a masked IP set"));
  cmd->callback([o, &status] { status = craft(*o); });
}

} // namespace LspPingTool
