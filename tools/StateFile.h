#pragma once

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>
#include <string_view>

#include "Interface/DeviceIntfStatusDir.h"
#include "Mesk/Fib/ForwardingStatus.h"
#include "Mesk/Fib6/ForwardingStatus.h"
#include "Mpls/Api/Status.h"
#include "Mpls/CommonLib.h"
#include "Mpls/Hardware/Status.h"
#include "Mpls/LfibStatus.h"
#include "Rsvp/RsvpStatus.h"
#include "Tunnel/TunnelTable/TiLfaTunnelTable.h"
#include "Wirx/Ip6Addr.h"
#include "Wirx/IpAddr.h"

namespace LspPingTool {

// A router's forwarding state, as the echo responder reads it, and the
// responder's own addresses: what a state file describes (see
// docs/state-file.md).
struct RouterState {
  Orv::Ptr<Mpls::Hardware::Status> hardware;
  Orv::Ptr<Mpls::Api::Status> mpls;
  Orv::Ptr<Mpls::CommonLib> bindings;
  Orv::Ptr<Mpls::LfibStatus> lfib;
  Orv::Ptr<Mesk::Fib::ForwardingStatus> fib;
  Orv::Ptr<Mesk::Fib6::ForwardingStatus> fib6;
  Orv::Ptr<Tunnel::TunnelTable::TiLfaTunnelTable> tiLfaTunnels;
  Orv::Ptr<Rsvp::RsvpStatus> rsvp;
  Orv::Ptr<Interface::DeviceIntfStatusDir> interfaces;
  // The source addresses of the responder's IPv4 and IPv6 replies.
  Wirx::IpAddr ipv4;
  Wirx::Ip6Addr ipv6;
};

// Why a state file was not loaded, in one line: the file, the place in it
// (line:column for a syntax error, else a JSON pointer such as
// /lfib/routes/3/viaSet) and what is wrong there.
class StateFileError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// Loads the state file at `path` into new objects, handed over only when
// the whole file is right; throws StateFileError otherwise.
RouterState loadStateFile(const std::string &path);

// The same from the file's text, `fileName` naming it in the message.
RouterState loadState(std::string_view text, const std::string &fileName);

// The same from a document already parsed, `name` naming it in the message.
RouterState loadStateDocument(const nlohmann::json &document,
                              const std::string &name);

// The document of a state file's text, checked as loadState() checks it;
// throws StateFileError naming `fileName`.
nlohmann::json readStateDocument(std::string_view text,
                                 const std::string &fileName);

// The same from the file at `path`.
nlohmann::json readStateFile(const std::string &path);

// A state document as one line of text, as `lspping state --json` writes
// it: the same document, the same text.
std::string stateDocumentText(const nlohmann::json &document);

} // namespace LspPingTool
