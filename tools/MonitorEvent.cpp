#include "tools/MonitorEvent.h"

#include "tools/ResponderCounters.h"

namespace LspPingTool {

namespace {

nlohmann::ordered_json hopJson(const std::optional<PathHop> &hop) {
  if (!hop) {
    return nullptr;
  }
  return {{"from", hop->from.empty() ? nlohmann::ordered_json()
                                     : nlohmann::ordered_json(hop->from)},
          {"labels", hop->labels}};
}

std::string kindName(MonitorEvent::Kind kind) {
  switch (kind) {
  case MonitorEvent::Kind::down:
    return "down";
  case MonitorEvent::Kind::up:
    return "up";
  case MonitorEvent::Kind::pathChanged:
    return "pathChanged";
  }
  return "";
}

} // namespace

std::string PathHop::text() const {
  if (from.empty()) {
    return "*";
  }
  std::string text = from + " [";
  for (std::size_t i = 0; i < labels.size(); ++i) {
    text += (i ? " " : "") + std::to_string(labels[i]);
  }
  return text + "]";
}

std::string MonitorEvent::text() const {
  const std::string window = " (" + std::to_string(failed) + " of " +
                             std::to_string(probes) +
                             (trace ? " traces" : " requests") + " failed)";
  switch (kind) {
  case Kind::down:
    return "lsp " + lsp + " down: " + reason + window;
  case Kind::up:
    return "lsp " + lsp + " up" + window;
  case Kind::pathChanged:
    return "lsp " + lsp + " path changed at hop " + std::to_string(hop) + ": " +
           (before ? before->text() : "none") + " -> " +
           (after ? after->text() : "none");
  }
  return "";
}

nlohmann::ordered_json MonitorEvent::json() const {
  nlohmann::ordered_json json = {{"event", kindName(kind)},
                                 {"lsp", lsp},
                                 {"fec", fec},
                                 {"mode", trace ? "trace" : "ping"}};
  if (kind == Kind::pathChanged) {
    json["hop"] = hop;
    json["before"] = hopJson(before);
    json["after"] = hopJson(after);
    nlohmann::ordered_json hops = nlohmann::ordered_json::array();
    for (const PathHop &h : path) {
      hops.push_back(hopJson(h));
    }
    json["path"] = hops;
    return json;
  }
  json["was"] =
      was.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(was);
  json["probes"] = probes;
  json["failed"] = failed;
  if (kind == Kind::down) {
    json["reason"] = reason;
    if (returnCode) {
      json["returnCode"] = *returnCode;
      json["returnCodeName"] = returnCodeName(*returnCode);
      json["returnSubcode"] = returnSubcode;
      json["from"] = from;
    } else {
      json["returnCode"] = nullptr;
      json["returnCodeName"] = nullptr;
      json["returnSubcode"] = nullptr;
      json["from"] = nullptr;
    }
    json["hop"] =
        hop == 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(hop);
  }
  return json;
}

} // namespace LspPingTool
