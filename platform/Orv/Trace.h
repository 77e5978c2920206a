#pragma once

#include <sstream>
#include <string>
#include <string_view>

#include "Orv/Export.h"

namespace Orv {

// Receives every trace line that passes its source's level.
class LSPPING_EXPORT TraceSink {
public:
  virtual ~TraceSink() = default;
  virtual void write(std::string_view source, int level,
                     std::string_view text) = 0;
};

// Writes "<source>[<level>] <text>" lines to standard error.
class LSPPING_EXPORT StderrTraceSink : public TraceSink {
public:
  void write(std::string_view source, int level,
             std::string_view text) override;
};

// A named trace source ("LspPing/LspPingPktParser"). Levels run from 0 (rare,
// important) to 9 (per-packet detail); a source is silent until the hosting
// program enables it up to some level. Sources are long-lived statics.
class LSPPING_EXPORT TraceSource {
public:
  explicit TraceSource(std::string_view name);
  ~TraceSource();
  TraceSource(const TraceSource &) = delete;
  TraceSource &operator=(const TraceSource &) = delete;

  const std::string &name() const { return name_; }
  bool enabled(int level) const { return level <= level_; }
  void levelIs(int level) { level_ = level; }

  template <class... Parts> void emit(int level, const Parts &...parts) const {
    std::ostringstream text;
    (text << ... << parts);
    write(level, text.str());
  }

private:
  void write(int level, const std::string &text) const;
  std::string name_;
  int level_ = -1;
};

// Enables every source whose name matches `pattern` (exact, or a prefix
// ending in '*') up to `level`; -1 silences. Applies to sources created later.
LSPPING_EXPORT void traceLevelIs(std::string_view pattern, int level);

// The sink that receives trace lines; nullptr restores standard error.
LSPPING_EXPORT void traceSinkIs(TraceSink *sink);

} // namespace Orv

// Formats nothing unless the source is enabled at that level.
#define ORV_TRACE(source, level, ...)                                          \
  do {                                                                         \
    if ((source).enabled(level)) {                                             \
      (source).emit(level, __VA_ARGS__);                                       \
    }                                                                          \
  } while (0)
