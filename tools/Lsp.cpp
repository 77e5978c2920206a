#include "tools/Lsp.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <sstream>

#include "Wirx/EthAddr.h"
#include "Wirx/IpGenPrefix.h"

namespace LspPingTool {

namespace {

using LspPing::LspPingTunnelType;

// The most labels a request carries, as `craft` allows.
constexpr std::size_t maxLabels = 16;
// A pseudowire's type when none is given: Ethernet.
constexpr unsigned ethernetPwType = 5;

std::optional<Orv::U32> number(std::string_view text, Orv::U32 max) {
  Orv::U32 value = 0;
  const auto [end, ec] =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || value > max) {
    return std::nullopt;
  }
  return value;
}

std::string familyName(Wirx::AddrFamily family) {
  return family == Wirx::AddrFamily::ipv6 ? "IPv6" : "IPv4";
}

// Reads the words and options into an LSP, one check at a time; the first
// that fails leaves its message in `error`.
class Reader {
public:
  Reader(const LspWords &words, std::string &error)
      : words_(words), error_(error) {}

  std::optional<Lsp> lsp() {
    if (fec() && labels() && path() && family() && kindOptions()) {
      return lsp_;
    }
    return std::nullopt;
  }

private:
  bool fail(const std::string &why) {
    error_ = why;
    return false;
  }

  // The FEC's words, after its kind: exactly `count`.
  bool arguments(std::size_t count, const char *form) {
    if (words_.fec.size() != count + 1) {
      return fail(words_.fec[0] + ": expected " + form);
    }
    return true;
  }

  std::optional<Wirx::IpGenPrefix> prefixWord(std::size_t i) {
    const auto prefix = Wirx::IpGenPrefix::fromString(words_.fec[i]);
    if (!prefix || !*prefix) {
      fail(words_.fec[0] + " " + words_.fec[i] +
           ": not a prefix (ADDRESS/LENGTH)");
      return std::nullopt;
    }
    return prefix;
  }

  std::optional<Wirx::IpGenAddr> addrWord(std::size_t i, bool ipv4Only) {
    const auto addr = Wirx::IpGenAddr::fromString(words_.fec[i]);
    if (!addr || !*addr || (ipv4Only && !addr->isIpv4())) {
      fail(words_.fec[0] + " " + words_.fec[i] + ": not an " +
           (ipv4Only ? "IPv4" : "IPv4 or IPv6") + " address");
      return std::nullopt;
    }
    return addr;
  }

  std::optional<Orv::U32> numberWord(std::size_t i, Orv::U32 max,
                                     const char *what) {
    const auto value = number(words_.fec[i], max);
    if (!value) {
      fail(words_.fec[0] + " " + words_.fec[i] + ": not a " + what + " (0 to " +
           std::to_string(max) + ")");
    }
    return value;
  }

  bool fec() {
    if (words_.fec.empty()) {
      return fail("FEC is missing: ldp, rsvp, sr, nil, static or pw");
    }
    Session::Target &target = lsp_.target;
    const std::string &kind = words_.fec[0];
    if (kind == "ldp" || kind == "sr" || kind == "static") {
      if (!arguments(1, "one prefix")) {
        return false;
      }
      const auto prefix = prefixWord(1);
      if (!prefix) {
        return false;
      }
      if (kind == "ldp" && !prefix->addr().isIpv4()) {
        return fail("ldp " + words_.fec[1] + ": an LDP FEC is IPv4");
      }
      target.fec = *prefix;
      target.tunnelType =
          kind == "ldp"             ? LspPingTunnelType::tunnelLdpIpv4
          : kind == "static"        ? LspPingTunnelType::tunnelStaticConfig
          : prefix->addr().isIpv4() ? LspPingTunnelType::tunnelSrIpv4
                                    : LspPingTunnelType::tunnelSrIpv6;
      lsp_.toward = prefix->addr();
      lsp_.fec = kind + "=" + prefix->stringValue();
      return true;
    }
    if (kind == "rsvp") {
      if (!arguments(2, "END_POINT TUNNEL_ID")) {
        return false;
      }
      const auto end = addrWord(1, true);
      const auto tunnel =
          end ? numberWord(2, 0xFFFF, "tunnel id") : std::nullopt;
      if (!tunnel) {
        return false;
      }
      target.tunnelType = LspPingTunnelType::tunnelRsvpIpv4;
      target.rsvp.tunnelDst = end->v4();
      target.rsvp.tunnelId = Orv::U16(*tunnel);
      target.fec = Wirx::IpGenPrefix(*end, 32);
      lsp_.toward = *end;
      lsp_.fec = "rsvp=" + end->stringValue() + "," + std::to_string(*tunnel);
      return true;
    }
    if (kind == "pw") {
      if (!arguments(3, "SENDER RECEIVER PW_ID")) {
        return false;
      }
      const auto sender = addrWord(1, false);
      const auto receiver = sender ? addrWord(2, false) : std::nullopt;
      const auto id =
          receiver ? numberWord(3, 0xFFFFFFFF, "pseudowire id") : std::nullopt;
      if (!id) {
        return false;
      }
      if (sender->af() != receiver->af()) {
        return fail("pw " + words_.fec[1] + " " + words_.fec[2] +
                    ": sender and receiver of one family");
      }
      target.tunnelType = LspPingTunnelType::tunnelPwLdp;
      target.pw = LspPing::LspPingPwInfo(*sender, *receiver, *id, 0);
      target.fec = Wirx::IpGenPrefix(
          *receiver, Wirx::IpGenPrefix::maxLength(receiver->af()));
      lsp_.toward = *receiver;
      lsp_.fec = "pw=" + sender->stringValue() + "," + receiver->stringValue() +
                 "," + std::to_string(*id);
      return true;
    }
    if (kind == "nil") {
      if (!arguments(0, "no more words")) {
        return false;
      }
      target.tunnelType = LspPingTunnelType::tunnelModeRaw;
      return true;
    }
    return fail("FEC " + kind + ": expected ldp, rsvp, sr, nil, static or pw");
  }

  // LABEL[/ttl=N], outermost first.
  bool labels() {
    if (words_.labels.size() > maxLabels) {
      return fail("--label: at most " + std::to_string(maxLabels) + " labels");
    }
    for (const std::string &text : words_.labels) {
      const std::size_t slash = text.find('/');
      const auto label =
          number(std::string_view(text).substr(0, slash), Wirx::MplsLabel::max);
      std::optional<Orv::U32> ttl = 255;
      if (slash != std::string::npos) {
        const std::string_view rest = std::string_view(text).substr(slash + 1);
        ttl = rest.starts_with("ttl=") ? number(rest.substr(4), 255)
                                       : std::nullopt;
        lsp_.ttlsSet = true;
      }
      if (!label || !ttl) {
        return fail("--label " + text +
                    ": expected LABEL[/ttl=N], a label of 0 to 1048575 and a "
                    "TTL of 0 to 255");
      }
      lsp_.target.labels.push_back(Wirx::MplsLabel(*label));
      lsp_.ttls.push_back(Orv::U8(*ttl));
    }
    const auto type = lsp_.target.tunnelType;
    const bool needsLabel = type == LspPingTunnelType::tunnelModeRaw ||
                            type == LspPingTunnelType::tunnelStaticConfig ||
                            type == LspPingTunnelType::tunnelPwLdp;
    if (needsLabel && lsp_.target.labels.empty()) {
      return fail(words_.fec[0] + ": needs --label: " +
                  (type == LspPingTunnelType::tunnelPwLdp
                       ? "the pseudowire's label"
                       : "the Nil FEC names the top label"));
    }
    if (type == LspPingTunnelType::tunnelModeRaw ||
        type == LspPingTunnelType::tunnelStaticConfig) {
      const std::string top = lsp_.target.labels[0].stringValue();
      lsp_.fec = words_.fec[0] + "=" +
                 (type == LspPingTunnelType::tunnelModeRaw
                      ? top
                      : lsp_.target.fec.stringValue());
    }
    return true;
  }

  std::optional<Wirx::IpGenAddr> addrOption(const char *option,
                                            const std::string &text) {
    const auto addr = Wirx::IpGenAddr::fromString(text);
    if (!addr || !*addr) {
      fail(std::string(option) + " " + text + ": not an IPv4 or IPv6 address");
      return std::nullopt;
    }
    return addr;
  }

  bool path() {
    Session::Target &target = lsp_.target;
    target.intf = Wirx::IntfId(words_.intf);
    if (!words_.nexthop.empty()) {
      const auto nexthop = addrOption("--nexthop", words_.nexthop);
      if (!nexthop) {
        return false;
      }
      target.nexthop = *nexthop;
    }
    if (!words_.nexthopMac.empty()) {
      const auto mac = Wirx::EthAddr::fromString(words_.nexthopMac);
      if (!mac || !*mac) {
        return fail("--nexthop-mac " + words_.nexthopMac +
                    ": not a MAC address");
      }
      target.nexthopEthAddr = *mac;
    }
    if (words_.tc && *words_.tc > 7) {
      return fail("--tc " + std::to_string(*words_.tc) + ": not 0 to 7");
    }
    target.tc = Orv::U8(words_.tc.value_or(0));
    if (target.tunnelType == LspPingTunnelType::tunnelModeRaw &&
        (!target.intf || (!target.nexthop && !target.nexthopEthAddr))) {
      return fail("nil: needs -I and --nexthop or --nexthop-mac: a Nil FEC "
                  "has no address to find a route to");
    }
    return true;
  }

  bool family() {
    if (!words_.source.empty()) {
      const auto source = addrOption("-s", words_.source);
      if (!source) {
        return false;
      }
      lsp_.target.src = *source;
    }
    if (!words_.destination.empty()) {
      const auto dst = addrOption("--destination", words_.destination);
      if (!dst) {
        return false;
      }
      lsp_.dst = *dst;
    }
    const Wirx::IpGenAddr &src = lsp_.target.src;
    if (!!src && !!lsp_.dst && src.af() != lsp_.dst.af()) {
      return fail("--destination " + words_.destination + ": not of -s " +
                  words_.source + "'s family");
    }
    lsp_.family = !!src                   ? src.af()
                  : !!lsp_.dst            ? lsp_.dst.af()
                  : !!lsp_.toward         ? lsp_.toward.af()
                  : !!lsp_.target.nexthop ? lsp_.target.nexthop.af()
                                          : Wirx::AddrFamily::ipv4;
    const Wirx::IpGenAddr &nexthop = lsp_.target.nexthop;
    if (!!nexthop && nexthop.af() != lsp_.family) {
      return fail("--nexthop " + words_.nexthop + ": not " +
                  familyName(lsp_.family) + ", the requests' family");
    }
    return true;
  }

  bool ipv4Option(const char *option, const std::optional<std::string> &text,
                  Wirx::IpAddr &into) {
    if (!text) {
      return true;
    }
    const auto addr = Wirx::IpGenAddr::fromString(*text);
    if (!addr || !addr->isIpv4()) {
      return fail(std::string(option) + " " + *text + ": not an IPv4 address");
    }
    into = addr->v4();
    return true;
  }

  // Each of these options belongs to one kind of FEC.
  bool kindOptions() {
    const std::string &kind = words_.fec[0];
    const auto only = [&](bool given, const char *option, const char *owner) {
      return !given || kind == owner ||
             fail(std::string(option) + ": only with " + owner + " FECs");
    };
    if (!only(words_.lspId.has_value(), "--lsp-id", "rsvp") ||
        !only(words_.extTunnelId.has_value(), "--ext-tunnel-id", "rsvp") ||
        !only(words_.sender.has_value(), "--sender", "rsvp") ||
        !only(words_.igp.has_value(), "--igp", "sr") ||
        !only(words_.pwType.has_value(), "--pw-type", "pw")) {
      return false;
    }
    Session::Target &target = lsp_.target;
    if (words_.lspId && *words_.lspId > 0xFFFF) {
      return fail("--lsp-id " + std::to_string(*words_.lspId) +
                  ": not 0 to 65535");
    }
    target.rsvp.lspId = Orv::U16(words_.lspId.value_or(0));
    if (!ipv4Option("--ext-tunnel-id", words_.extTunnelId,
                    target.rsvp.extendedTunnelId)) {
      return false;
    }
    Wirx::IpAddr sender;
    if (!ipv4Option("--sender", words_.sender, sender)) {
      return false;
    }
    if (words_.sender) {
      target.rsvpSender = sender;
    }
    // The library's client names IS-IS in every segment-routing FEC it
    // sends; asking for OSPF is refused rather than sent as IS-IS.
    if (words_.igp && *words_.igp != "isis") {
      return fail("--igp " + *words_.igp +
                  (*words_.igp == "ospf"
                       ? ": the client names IS-IS in every segment-routing "
                         "FEC; OSPF is not supported"
                       : ": expected isis or ospf"));
    }
    if (words_.pwType && *words_.pwType > 0x7FFF) {
      return fail("--pw-type " + std::to_string(*words_.pwType) +
                  ": not 0 to 32767");
    }
    target.pw.pwType = words_.pwType.value_or(ethernetPwType);
    return true;
  }

  const LspWords &words_;
  std::string &error_;
  Lsp lsp_;
};

// A line's words, split at blanks, up to a `#`.
std::vector<std::string> wordsOf(const std::string &line) {
  std::istringstream in(line.substr(0, line.find('#')));
  std::vector<std::string> words;
  for (std::string word; in >> word;) {
    words.push_back(word);
  }
  return words;
}

// The words of a FEC file's line, read as the command line's are.
std::optional<LspWords> lineWords(std::vector<std::string> args,
                                  const LspWords &defaults,
                                  std::string &error) {
  LspWords words;
  CLI::App app;
  app.set_help_flag();
  addLspOptions(app, words);
  std::reverse(args.begin(), args.end());
  try {
    app.parse(args);
  } catch (const CLI::ParseError &e) {
    error = e.what();
    return std::nullopt;
  }
  for (const auto member :
       {&LspWords::intf, &LspWords::nexthop, &LspWords::nexthopMac,
        &LspWords::source, &LspWords::destination}) {
    if ((words.*member).empty()) {
      words.*member = defaults.*member;
    }
  }
  if (!words.tc) {
    words.tc = defaults.tc;
  }
  return words;
}

} // namespace

void addLspOptions(CLI::App &app, LspWords &words) {
  app.add_option("FEC", words.fec,
                 "the FEC: ldp PREFIX, rsvp END_POINT TUNNEL_ID, sr PREFIX, "
                 "nil, static PREFIX or pw SENDER RECEIVER PW_ID")
      ->type_name("WORD");
  app.add_option("--label", words.labels,
                 "a label to push, outermost first; repeatable. None: the "
                 "requests go as plain IP")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("LABEL[/ttl=N]");
  app.add_option("-I,--interface", words.intf,
                 "the interface the requests leave by; default: the one of "
                 "the kernel's route to the FEC")
      ->type_name("IF");
  app.add_option("--nexthop", words.nexthop,
                 "the next hop's address, its MAC taken from the kernel's "
                 "neighbours (asked for when missing); default: the "
                 "kernel's route's")
      ->type_name("ADDR");
  app.add_option("--nexthop-mac", words.nexthopMac,
                 "the next hop's MAC address, in place of the kernel's")
      ->type_name("MAC");
  app.add_option("-s,--source", words.source,
                 "the requests' source address, where replies come back; "
                 "default: the interface's address of the FEC's family")
      ->type_name("ADDR");
  app.add_option("--destination", words.destination,
                 "the requests' IP destination; default: 127.0.0.1, or "
                 "::ffff:127.0.0.1 for IPv6")
      ->type_name("ADDR");
  app.add_option("--tc", words.tc, "the labels' traffic class, 0 to 7")
      ->type_name("N");
  app.add_option("--lsp-id", words.lspId, "rsvp: the LSP id (default 0)")
      ->type_name("N");
  app.add_option("--ext-tunnel-id", words.extTunnelId,
                 "rsvp: the extended tunnel id, an IPv4 address (default "
                 "0.0.0.0)")
      ->type_name("ADDR");
  app.add_option("--sender", words.sender,
                 "rsvp: the tunnel's sender address (default: the requests' "
                 "source)")
      ->type_name("ADDR");
  app.add_option("--igp", words.igp,
                 "sr: the IGP of the prefix segment; the client names IS-IS")
      ->type_name("isis");
  app.add_option("--pw-type", words.pwType,
                 "pw: the pseudowire type (default 5, Ethernet)")
      ->type_name("N");
}

std::optional<Lsp> lspOf(const LspWords &words, std::string &error) {
  return Reader(words, error).lsp();
}

std::optional<Lsp> lspOfLine(const std::string &line, const LspWords &defaults,
                             std::string &error) {
  std::vector<std::string> args = wordsOf(line);
  if (args.empty()) {
    error = "no FEC";
    return std::nullopt;
  }
  const auto words = lineWords(std::move(args), defaults, error);
  return words ? lspOf(*words, error) : std::nullopt;
}

std::optional<std::vector<Lsp>> readFecFile(const std::string &path,
                                            const LspWords &defaults,
                                            std::string &error) {
  std::ifstream in(path);
  if (!in) {
    error = path + ": " + std::strerror(errno);
    return std::nullopt;
  }
  std::vector<Lsp> lsps;
  unsigned number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (wordsOf(line).empty()) {
      continue;
    }
    auto lsp = lspOfLine(line, defaults, error);
    if (!lsp) {
      error = path + ":" + std::to_string(number) + ": " + error;
      return std::nullopt;
    }
    lsp->line = number;
    lsps.push_back(std::move(*lsp));
  }
  if (in.bad()) {
    error = path + ": " + std::strerror(errno);
    return std::nullopt;
  }
  if (lsps.empty()) {
    error = path + ": no LSP in the file";
    return std::nullopt;
  }
  return lsps;
}

} // namespace LspPingTool
