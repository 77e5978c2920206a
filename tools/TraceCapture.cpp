#include "tools/TraceCapture.h"

namespace LspPingTool {

namespace {

constexpr std::string_view responderTrace = "LspPing/LspPingReqHandler";
// The responder traces each function it enters at this level: that says
// nothing about why a request was dropped.
constexpr int functionEntryLevel = 8;

} // namespace

TraceCapture::TraceCapture() {
  Orv::traceSinkIs(this);
  Orv::traceLevelIs(responderTrace, 9);
}

TraceCapture::~TraceCapture() {
  Orv::traceLevelIs(responderTrace, -1);
  Orv::traceSinkIs(nullptr);
}

void TraceCapture::write(std::string_view source, int level,
                         std::string_view text) {
  if (source == responderTrace && level != functionEntryLevel) {
    last_ = text;
  }
}

} // namespace LspPingTool
