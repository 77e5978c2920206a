#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

#include "Orv/Types.h"
#include "Session/Target.h"
#include "Wirx/AddrFamily.h"
#include "Wirx/IpGenAddr.h"

namespace LspPingTool {

// What `lspping ping` and `trace` are told of one LSP, on the command line
// or on a line of a FEC file, as typed: the FEC's words (`ldp 10.0.0.9/32`,
// `rsvp 10.0.0.9 7`...) and the options that go with each LSP.
struct LspWords {
  std::vector<std::string> fec;
  std::vector<std::string> labels;
  std::string intf;
  std::string nexthop;
  std::string nexthopMac;
  std::string source;
  std::string destination;
  std::optional<unsigned> tc;
  // Options of one kind of FEC each.
  std::optional<unsigned> lspId;
  std::optional<std::string> extTunnelId;
  std::optional<std::string> sender;
  std::optional<std::string> igp;
  std::optional<unsigned> pwType;
};

// Adds the FEC's words (positional) and the per-LSP options to `app`.
void addLspOptions(CLI::App &app, LspWords &words);

// One LSP to ping or trace, read.
struct Lsp {
  // The FEC and what the command line says of the path: labels, interface,
  // next hop and its MAC address, source, traffic class.
  Session::Target target;
  // The FEC in the form `lspping craft --fec` takes, its arguments joined
  // by commas: "ldp=10.0.0.9/32", "rsvp=10.0.0.9,7", "nil=16".
  std::string fec;
  // The family of the requests' IP headers: the source's, else the
  // destination's, else the FEC's; IPv4 when nothing tells.
  Wirx::AddrFamily family = Wirx::AddrFamily::ipv4;
  // The address whose route the requests take when no interface or next
  // hop is named: the FEC's prefix, tunnel end point or pseudowire
  // receiver; unset for a Nil FEC.
  Wirx::IpGenAddr toward;
  // The requests' IP destination; unset: 127.0.0.1 of the family.
  Wirx::IpGenAddr dst;
  // The TTL of each label, outermost first, where the command line set one
  // (LABEL/ttl=N); 255 for the others.
  std::vector<Orv::U8> ttls;
  bool ttlsSet = false;
  // The line of the FEC file the LSP is on; 0 on the command line.
  unsigned line = 0;
  // What its lines of output start with when several LSPs run: the FEC,
  // with its line in the FEC file where two LSPs share one.
  std::string name;
};

// The LSP that `words` name; empty, with a one-line `error` naming the
// word or option and what is wrong with it, when they do not name one.
std::optional<Lsp> lspOf(const LspWords &words, std::string &error);

// The LSP that one line of words names, as a line of a FEC file (`ldp
// 10.0.0.9/32 --label 1004`), what it leaves out taken from `defaults`;
// empty, with a one-line `error`, when it names none.
std::optional<Lsp> lspOfLine(const std::string &line, const LspWords &defaults,
                             std::string &error);

// The LSPs of a FEC file: a line each, the FEC's words and the per-LSP
// options as on the command line; blank lines and what follows a `#` are
// skipped. Options that a line leaves out and `defaults` sets (interface,
// next hop, its MAC, source, destination, traffic class) are taken from
// `defaults`. Empty, with a one-line `error` naming the file and line,
// when a line does not name an LSP or the file cannot be read.
std::optional<std::vector<Lsp>> readFecFile(const std::string &path,
                                            const LspWords &defaults,
                                            std::string &error);

} // namespace LspPingTool
