#pragma once

#include <string>
#include <string_view>

#include "Orv/Trace.h"

namespace LspPingTool {

// Collects what the echo responder traces while this lives: its last
// words on a request it dropped say why. Only one may live at a time.
class TraceCapture : public Orv::TraceSink {
public:
  TraceCapture();
  ~TraceCapture() override;
  TraceCapture(const TraceCapture &) = delete;
  TraceCapture &operator=(const TraceCapture &) = delete;

  void write(std::string_view source, int level,
             std::string_view text) override;
  void clear() { last_.clear(); }
  const std::string &last() const { return last_; }

private:
  std::string last_;
};

} // namespace LspPingTool
