#include "tools/ResponderCounters.h"

#include "LspPing/LspPingReturnCode.h"

namespace LspPingTool {

std::string returnCodeName(Orv::U8 returnCode) {
  const std::string_view name =
      Orv::EnumTraits<LspPing::LspPingReturnCode>::type.nameOf(returnCode);
  return name.empty() ? std::to_string(returnCode) : std::string(name);
}

Orv::U64 ResponderCounters::replied() const {
  Orv::U64 sum = 0;
  for (const auto &[code, count] : replies_) {
    sum += count;
  }
  return sum;
}

Orv::U64 ResponderCounters::dropped() const {
  Orv::U64 sum = 0;
  for (const auto &[reason, count] : dropped_) {
    sum += count;
  }
  return sum;
}

std::string ResponderCounters::text() const {
  std::string text = "received " + std::to_string(received_) + ", replied " +
                     std::to_string(replied());
  const char *separator = " (";
  for (const auto &[code, count] : replies_) {
    text += separator + returnCodeName(code) + " (" + std::to_string(code) +
            ") " + std::to_string(count);
    separator = ", ";
  }
  text += replies_.empty() ? "" : ")";
  text += ", rate limited " + std::to_string(rateLimited_) + ", dropped " +
          std::to_string(dropped());
  separator = " (";
  for (const auto &[reason, count] : dropped_) {
    text += separator + reason + " " + std::to_string(count);
    separator = ", ";
  }
  text += dropped_.empty() ? "" : ")";
  return text;
}

void ResponderCounters::writeMetrics(MetricsText &text) const {
  text.family("lspping_responder_frames_total", "counter",
              "Frames the responder's sockets took.");
  text.sample("lspping_responder_frames_total", {}, received_);
  text.family("lspping_responder_replies_total", "counter",
              "Echo replies sent, by return code name.");
  for (const auto &[code, count] : replies_) {
    text.sample("lspping_responder_replies_total",
                {{"code", returnCodeName(code)}}, count);
  }
  text.family("lspping_responder_drops_total", "counter",
              "Frames dropped, by reason.");
  for (const auto &[reason, count] : dropped_) {
    text.sample("lspping_responder_drops_total", {{"reason", reason}}, count);
  }
  text.family("lspping_responder_rate_limited_total", "counter",
              "Echo requests dropped by the rate limit.");
  text.sample("lspping_responder_rate_limited_total", {}, rateLimited_);
}

nlohmann::ordered_json ResponderCounters::json() const {
  nlohmann::ordered_json replies = nlohmann::ordered_json::object();
  for (const auto &[code, count] : replies_) {
    replies[returnCodeName(code)] = count;
  }
  nlohmann::ordered_json drops = nlohmann::ordered_json::object();
  for (const auto &[reason, count] : dropped_) {
    drops[reason] = count;
  }
  return {{"event", "counters"},
          {"received", received_},
          {"replied", replied()},
          {"replies", replies},
          {"rateLimited", rateLimited_},
          {"dropped", dropped()},
          {"drops", drops}};
}

} // namespace LspPingTool
