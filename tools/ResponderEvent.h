#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "MplsUtils/EthPktParser.h"
#include "Orv/Types.h"
#include "Wirx/IpGenAddr.h"

namespace LspPingTool {

// What `lspping responder` did with one frame, as it reports it: the reply
// it sent, or why it dropped the frame.
struct ResponderEvent {
  std::string intf;
  // The frame's source: its IP address and UDP port where it was parsed
  // that far, else its MAC address (port 0).
  std::string from;
  Orv::U16 fromPort = 0;
  Wirx::MplsLabelStack labels;

  bool replied = false;
  // For a reply: the request's Target FEC in `lspping craft --fec` form,
  // the return code and subcode, the reply's destination.
  std::string fec;
  Orv::U8 returnCode = 0;
  Orv::U8 returnSubcode = 0;
  Wirx::IpGenAddr to;
  Orv::U16 toPort = 0;
  // For a drop: why, and the counter it went to.
  std::string reason;
  std::string counter;

  // The event of `frame` received on `intf`, its outcome not yet set.
  static ResponderEvent of(const std::string &intf,
                           const MplsUtils::EthPktParser &frame);

  // "IF: from SRC port P[, labels L/ttl=T ...][, FEC F]: CODE_NAME (CODE)
  // subcode S, reply to DST port P" or "IF: from SRC[ port P]: dropped:
  // REASON".
  std::string text() const;
  nlohmann::ordered_json json() const;
};

// The Target FEC of the echo request `frame` carries, as `lspping craft
// --fec` takes it ("ldp=10.0.0.9/32"), "none" without one.
std::string fecText(const MplsUtils::EthPktParser &frame);

} // namespace LspPingTool
