#pragma once

// Helpers shared by the test programs: bytes written out as hex, and the
// trace lines the code under test writes.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Orv/Trace.h"

namespace TestSupport {

// Bytes from hex text; blanks and '|' separate fields for the reader's eye.
inline std::vector<std::uint8_t> hexBytes(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  int high = -1;
  for (char c : text) {
    int nibble;
    if (c >= '0' && c <= '9') {
      nibble = c - '0';
    } else if (c >= 'a' && c <= 'f') {
      nibble = c - 'a' + 10;
    } else if (c >= 'A' && c <= 'F') {
      nibble = c - 'A' + 10;
    } else {
      continue;
    }
    if (high < 0) {
      high = nibble;
    } else {
      bytes.push_back(static_cast<std::uint8_t>(high << 4 | nibble));
      high = -1;
    }
  }
  return bytes;
}

// The message of the `Exception` that `f` throws, or "" when none is thrown.
template <class Exception, class F> std::string thrownText(F &&f) {
  try {
    f();
  } catch (const Exception &e) {
    return e.what();
  }
  return "";
}

// While it lives, takes every line that `source` traces up to `level`.
class TraceCapture : public Orv::TraceSink {
public:
  TraceCapture(std::string source, int level) : source_(std::move(source)) {
    Orv::traceSinkIs(this);
    Orv::traceLevelIs(source_, level);
  }
  ~TraceCapture() override {
    Orv::traceLevelIs(source_, -1);
    Orv::traceSinkIs(nullptr);
  }
  void write(std::string_view, int level, std::string_view text) override {
    lines.emplace_back(level, text);
  }

  // The texts traced at `level`, in order.
  std::vector<std::string> at(int level) const {
    std::vector<std::string> texts;
    for (const auto &[lineLevel, text] : lines) {
      if (lineLevel == level) {
        texts.push_back(text);
      }
    }
    return texts;
  }
  bool has(std::string_view text) const { return levelOf(text) >= 0; }
  // The level `text` was first traced at, or -1.
  int levelOf(std::string_view text) const {
    const auto it =
        std::find_if(lines.begin(), lines.end(),
                     [&](const auto &line) { return line.second == text; });
    return it == lines.end() ? -1 : it->first;
  }

  std::vector<std::pair<int, std::string>> lines;

private:
  std::string source_;
};

} // namespace TestSupport
