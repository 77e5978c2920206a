#include "tools/PingReport.h"

#include <sstream>

#include "Orv/Clock.h"
#include "Orv/Enum.h"
#include "Session/Format.h"
#include "tools/SignalingProtocolName.h"

namespace LspPingTool {

namespace {

using Json = nlohmann::ordered_json;

double ms(Orv::U32 micros) { return micros / 1000.0; }

// "labels 1004 2004", or "no label" for plain IP.
std::string labelsText(const std::vector<Wirx::MplsLabel> &labels) {
  if (labels.empty()) {
    return "no label";
  }
  std::string text = labels.size() == 1 ? "label" : "labels";
  for (const Wirx::MplsLabel &label : labels) {
    text += " " + label.stringValue();
  }
  return text;
}

Json mappingJson(const LspPing::LspPingDownstreamMappingInfo &mapping) {
  Json labels = Json::array();
  for (Orv::U8 i = 0; i < mapping.labelStack.size; ++i) {
    const LspPing::LspPingDownstreamLabelEntry entry =
        mapping.labelStack.labelEntry[i];
    labels.push_back(
        {{"label", entry.label().value()},
         {"protocol", std::string(signalingProtocolName(entry.protocol()))}});
  }
  return {{"address", mapping.dsIpAddr.stringValue()},
          {"interface", mapping.dsIntfAddr.stringValue()},
          {"mtu", mapping.mtu},
          {"labels", std::move(labels)}};
}

Json replyJson(const Session::Reply &reply) {
  return {{"from", reply.from.stringValue()},
          {"returnCode", Orv::U32(reply.code)},
          {"returnCodeName", Orv::stringValue(reply.code)},
          {"returnSubcode", reply.subcode},
          {"time", ms(reply.roundTrip)}};
}

Json hopJson(const Session::Hop &hop) {
  Json json = {{"ttl", hop.ttl}, {"lost", hop.lost}};
  if (hop.lost) {
    return json;
  }
  json.update(replyJson(hop.reply));
  Json mappings = Json::array();
  for (const auto &mapping : hop.reply.mappings) {
    mappings.push_back(mappingJson(mapping));
  }
  json["mappings"] = std::move(mappings);
  json["next"] = hop.next >= 0 ? Json(hop.next) : Json(nullptr);
  return json;
}

const char *endName(Session::Path::End end) {
  switch (end) {
  case Session::Path::End::egress:
    return "egress";
  case Session::Path::End::failed:
    return "failed";
  case Session::Path::End::lost:
    return "lost";
  case Session::Path::End::ttlLimit:
    return "ttlLimit";
  }
  return "";
}

Json pathJson(const Session::Path &path) {
  Json destinations = Json::array();
  for (const Wirx::IpGenAddr &dst : path.destinations) {
    destinations.push_back(dst.stringValue());
  }
  Json hops = Json::array();
  for (const Session::Hop &hop : path.hops) {
    hops.push_back(hopJson(hop));
  }
  return {{"destinations", std::move(destinations)},
          {"end", endName(path.end)},
          {"endText", Session::endText(path)},
          {"hops", std::move(hops)}};
}

Json nullIfEmpty(const std::string &text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

} // namespace

PingReport::PingReport(std::ostream &out, Kiv::TimerWheel &wheel, Style style)
    : out_(out), style_(style), flush_(wheel, [this] { out_.flush(); }) {}

void PingReport::start(const Lsp &lsp, Mode mode,
                       const Session::IngressPath &path,
                       const Wirx::IpGenAddr &dst, unsigned destinations,
                       const std::string &limits) {
  if (style_.quiet) {
    return;
  }
  const char *modeName = mode == Mode::ping    ? "ping"
                         : mode == Mode::trace ? "trace"
                                               : "treeTrace";
  if (style_.json) {
    Json labels = Json::array();
    for (const Wirx::MplsLabel &label : path.labels) {
      labels.push_back(label.value());
    }
    json(lsp, "start",
         {{"mode", modeName},
          {"interface", path.intf.name()},
          {"nexthop",
           !path.nexthop ? Json(nullptr) : Json(path.nexthop.stringValue())},
          {"nexthopMac", path.nexthopEthAddr.stringValue()},
          {"labels", std::move(labels)},
          {"source", path.src.stringValue()},
          {"destination", dst.stringValue()},
          {"destinations", destinations}});
    return;
  }
  const char *what = mode == Mode::ping    ? "LSP ping "
                     : mode == Mode::trace ? "LSP trace "
                                           : "LSP tree trace ";
  std::string via = path.nexthopEthAddr.stringValue();
  if (!!path.nexthop) {
    via = path.nexthop.stringValue() + " (" + via + ")";
  }
  std::string to = dst.stringValue();
  if (destinations > 1) {
    to = std::to_string(destinations) + " destinations from " + to;
  }
  text(lsp, what + lsp.fec + " on " + path.intf.name() + " via " + via + ", " +
                labelsText(path.labels) + ", from " + path.src.stringValue() +
                " to " + to + limits + ":\n");
}

void PingReport::reply(const Lsp &lsp, const Session::Reply &reply) {
  if (style_.quiet) {
    return;
  }
  if (style_.json) {
    Json body = {{"seq", reply.seq}};
    body.update(replyJson(reply));
    json(lsp, "reply", std::move(body));
    return;
  }
  text(lsp, Session::pingReplyText(reply) + "\n");
}

void PingReport::lost(const Lsp &lsp, Orv::U32 seq) {
  if (style_.quiet) {
    return;
  }
  if (style_.json) {
    json(lsp, "noReply", {{"seq", seq}});
    return;
  }
  text(lsp, Session::pingLostText(seq) + "\n");
}

void PingReport::pingDone(const Lsp &lsp,
                          const Session::PingSession::Summary &summary,
                          bool interrupted) {
  if (style_.json) {
    const bool any = summary.received != 0;
    const auto time = [any](Orv::U32 micros) {
      return any ? Json(ms(micros)) : Json(nullptr);
    };
    json(lsp, "summary",
         {{"sent", summary.sent},
          {"received", summary.received},
          {"loss", summary.sent
                       ? (summary.sent - summary.received) * 100 / summary.sent
                       : 0},
          {"min", time(summary.minRoundTrip)},
          {"avg", time(summary.avgRoundTrip())},
          {"max", time(summary.maxRoundTrip)},
          {"mdev", time(summary.mdevRoundTrip())},
          {"interrupted", interrupted},
          {"error", nullIfEmpty(summary.error)}});
    return;
  }
  text(lsp, Session::pingSummary(lsp.fec, summary));
}

void PingReport::hop(const Lsp &lsp, const Session::Hop &hop) {
  if (style_.quiet) {
    return;
  }
  if (style_.json) {
    json(lsp, "hop", hopJson(hop));
    return;
  }
  text(lsp, Session::hopText(hop) + "\n");
}

void PingReport::traceDone(const Lsp &lsp, const Session::Trace &trace,
                           bool interrupted) {
  std::size_t reached = 0;
  for (const Session::Path &path : trace.paths) {
    reached += path.end == Session::Path::End::egress ? 1 : 0;
  }
  if (style_.json) {
    for (const Session::Path &path : trace.tree && !style_.quiet
                                         ? trace.paths
                                         : std::vector<Session::Path>()) {
      json(lsp, "path", pathJson(path));
    }
    json(lsp, "summary",
         {{"reachedEgress", !interrupted && trace.reachedEgress()},
          {"paths", trace.paths.size()},
          {"pathsReachingEgress", reached},
          {"requests", trace.requests},
          {"branchesNotFollowed", trace.branchesNotFollowed},
          {"interrupted", interrupted},
          {"error", nullIfEmpty(trace.error)}});
    return;
  }
  std::string lines;
  if (trace.tree && !style_.quiet) {
    for (std::size_t i = 0; i < trace.paths.size(); ++i) {
      const Session::Path &path = trace.paths[i];
      lines += "path " + std::to_string(i + 1) + " of " +
               std::to_string(trace.paths.size()) + " (" +
               Session::destinationsText(path.destinations) +
               "): " + Session::endText(path) + "\n";
      for (const Session::Hop &hop : path.hops) {
        lines += Session::hopText(hop) + "\n";
      }
    }
  }
  lines += interrupted ? "--- " + lsp.fec +
                             (trace.tree ? " LSP tree trace" : " LSP trace") +
                             ": interrupted\n"
                       : Session::traceSummary(trace, lsp.fec);
  text(lsp, lines);
}

void PingReport::text(const Lsp &lsp, const std::string &text) {
  if (!style_.prefixed) {
    out_ << text;
  } else {
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
      out_ << lsp.name << ": " << line << "\n";
    }
  }
  flushSoon();
}

void PingReport::json(const Lsp &lsp, const char *event, Json body) {
  Json object = {{"event", event}, {"fec", lsp.fec}};
  if (lsp.line != 0) {
    object["line"] = lsp.line;
  }
  object.update(body);
  out_ << object.dump(-1, ' ', false, Json::error_handler_t::replace) << "\n";
  flushSoon();
}

// Once the loop has run what is due now: a burst of lines goes out in one
// write.
void PingReport::flushSoon() {
  if (!flush_.armed()) {
    flush_.timeMinIs(Orv::now());
  }
}

} // namespace LspPingTool
