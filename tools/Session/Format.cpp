#include "Session/Format.h"

#include <cstdio>
#include <string_view>

#include "LspPing/LspPingDownstreamSignalingProtocol.h"
#include "Orv/Enum.h"

namespace Session {

namespace {

constexpr std::size_t addressWidth = 15;

// The protocol's own name less the prefix all of them share: "ldp",
// "rsvpTe", "isis".
std::string protocolText(LspPing::LspPingDownstreamSignalingProtocol protocol) {
  constexpr std::string_view prefix = "dsInfoSignalingProtocol";
  std::string name = Orv::stringValue(protocol);
  if (name.size() > prefix.size() && name.starts_with(prefix)) {
    name.erase(0, prefix.size());
    name[0] = char(name[0] - 'A' + 'a');
  }
  return name;
}

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) {
    text.append(width - text.size(), ' ');
  }
  return text;
}

Orv::U8 lastByte(const Wirx::IpGenAddr &addr) {
  return Orv::U8(addr.v4().value());
}

// The text of IPv4 `addr` up to its last byte: "127.0.0.".
std::string allButLastByte(const Wirx::IpGenAddr &addr) {
  const std::string text = addr.stringValue();
  return text.substr(0, text.size() - std::to_string(lastByte(addr)).size());
}

} // namespace

std::string codeText(LspPing::LspPingReturnCode code, Orv::U8 subcode) {
  return Orv::stringValue(code) + "(" + std::to_string(Orv::U32(code)) + "/" +
         std::to_string(subcode) + ")";
}

std::string codeNameText(LspPing::LspPingReturnCode code, Orv::U8 subcode) {
  return Orv::stringValue(code) + " (code " + std::to_string(Orv::U32(code)) +
         ", subcode " + std::to_string(subcode) + ")";
}

std::string msText(Orv::U32 micros) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", micros / 1000.0);
  return text;
}

std::string labelsText(const LspPing::LspPingDownstreamLabelStack &labels) {
  std::string text = "[";
  for (Orv::U8 i = 0; i < labels.size; ++i) {
    const LspPing::LspPingDownstreamLabelEntry entry = labels.labelEntry[i];
    text += (i == 0 ? "" : ", ") + entry.label().stringValue() + " " +
            protocolText(entry.protocol());
  }
  return text + "]";
}

std::string mappingText(const LspPing::LspPingDownstreamMappingInfo &mapping) {
  std::string text = mapping.dsIpAddr.stringValue() + "  mtu " +
                     std::to_string(mapping.mtu) + "  labels " +
                     labelsText(mapping.labelStack);
  const Wirx::IpGenAddr &intf = mapping.dsIntfAddr;
  const bool named = intf.isIpv4() ? !!intf.v4() : intf.isIpv6() && !!intf.v6();
  if (named && intf != mapping.dsIpAddr) {
    text += "  intf " + intf.stringValue();
  }
  return text;
}

std::string destinationsText(const std::vector<Wirx::IpGenAddr> &destinations) {
  std::string text;
  std::string common;
  for (std::size_t i = 0; i < destinations.size();) {
    const Wirx::IpGenAddr &first = destinations[i];
    if (!first.isIpv4()) {
      text += (text.empty() ? "" : " ") + first.stringValue();
      common.clear();
      ++i;
      continue;
    }
    const std::string prefix = allButLastByte(first);
    std::size_t last = i;
    while (last + 1 < destinations.size() && destinations[last + 1].isIpv4() &&
           allButLastByte(destinations[last + 1]) == prefix &&
           lastByte(destinations[last + 1]) ==
               lastByte(destinations[last]) + 1) {
      ++last;
    }
    text += prefix == common ? "," : (text.empty() ? "" : " ") + prefix;
    common = prefix;
    text += std::to_string(lastByte(first));
    if (last != i) {
      text += "-" + std::to_string(lastByte(destinations[last]));
    }
    i = last + 1;
  }
  return text;
}

std::string hopText(const Hop &hop) {
  char ttl[8];
  std::snprintf(ttl, sizeof ttl, "%3u", unsigned(hop.ttl));
  if (hop.lost) {
    return std::string(ttl) + "  *";
  }
  const Reply &reply = hop.reply;
  std::string text = std::string(ttl) + "  " +
                     padded(reply.from.stringValue(), addressWidth) + "  " +
                     codeText(reply.code, reply.subcode);
  if (!reply.mappings.empty()) {
    const auto &shown =
        reply.mappings[hop.next >= 0 ? std::size_t(hop.next) : 0];
    text += "  mtu " + std::to_string(shown.mtu) + "  labels " +
            labelsText(shown.labelStack);
  }
  text += "  time " + msText(reply.roundTrip) + " ms";
  if (reply.mappings.size() > 1) {
    for (std::size_t i = 0; i < reply.mappings.size(); ++i) {
      text += "\n" + std::string(5 + addressWidth + 2, ' ') + "downstream " +
              mappingText(reply.mappings[i]) +
              (hop.next == int(i) ? "  (this path)" : "");
    }
  }
  return text;
}

std::string endText(const Path &path) {
  if (path.hops.empty()) {
    return "no hop answered";
  }
  const Hop &last = path.hops.back();
  const std::string ttl = "TTL " + std::to_string(last.ttl);
  switch (path.end) {
  case Path::End::egress:
    return "egress " + last.reply.from.stringValue() + " reached at " + ttl;
  case Path::End::failed:
    return codeText(last.reply.code, last.reply.subcode) + " at " +
           last.reply.from.stringValue() + ", " + ttl;
  case Path::End::lost:
    return "no reply up to " + ttl;
  case Path::End::ttlLimit:
    return "TTL limit " + std::to_string(last.ttl) + " reached";
  }
  return "";
}

std::string routeText(const Path &path) {
  std::string text;
  for (const Hop &hop : path.hops) {
    text += (text.empty() ? "" : " -> ") +
            (hop.lost ? std::string("*") : hop.reply.from.stringValue());
  }
  return text;
}

std::string pingReplyText(const Reply &reply) {
  return "seq=" + std::to_string(reply.seq) + " reply from " +
         reply.from.stringValue() + ": " +
         codeNameText(reply.code, reply.subcode) +
         " time=" + msText(reply.roundTrip) + " ms";
}

std::string pingLostText(Orv::U32 seq) {
  return "seq=" + std::to_string(seq) + " no reply";
}

std::string pingSummary(const std::string &name,
                        const PingSession::Summary &summary) {
  const Orv::U32 lost = summary.sent - summary.received;
  std::string text =
      "--- " + name + " LSP ping statistics ---\n" +
      std::to_string(summary.sent) + " requests sent, " +
      std::to_string(summary.received) + " replies received, " +
      std::to_string(summary.sent ? lost * 100 / summary.sent : 0) + "% loss\n";
  if (summary.received != 0) {
    text += "round-trip min/avg/max/mdev = " + msText(summary.minRoundTrip) +
            "/" + msText(summary.avgRoundTrip()) + "/" +
            msText(summary.maxRoundTrip) + "/" +
            msText(summary.mdevRoundTrip()) + " ms\n";
  }
  if (!summary.error.empty()) {
    text += "stopped: " + summary.error + "\n";
  }
  return text;
}

std::string traceSummary(const Trace &trace, const std::string &name) {
  std::string text =
      "--- " + name + (trace.tree ? " LSP tree trace: " : " LSP trace: ");
  if (!trace.error.empty()) {
    return text + trace.error + "\n";
  }
  if (!trace.tree) {
    return text + (trace.paths.empty() ? "" : endText(trace.paths[0])) + "\n";
  }
  std::size_t reached = 0;
  for (const Path &path : trace.paths) {
    reached += path.end == Path::End::egress ? 1 : 0;
  }
  const std::size_t failed = trace.paths.size() - reached;
  text += std::to_string(trace.paths.size()) +
          (trace.paths.size() == 1 ? " path, " : " paths, ") +
          std::to_string(reached) +
          (reached == 1 ? " reaches the egress, " : " reach the egress, ") +
          std::to_string(failed) + (failed == 1 ? " does not (" : " do not (") +
          std::to_string(trace.requests) + " requests)\n";
  for (const Path &path : trace.paths) {
    if (path.end != Path::End::egress) {
      text += "broken: " + routeText(path) + ": " + endText(path) + ", for " +
              destinationsText(path.destinations) + "\n";
    }
  }
  if (trace.branchesNotFollowed != 0) {
    text += std::to_string(trace.branchesNotFollowed) +
            " branches not followed: fan-out or path limit\n";
  }
  return text;
}

} // namespace Session
