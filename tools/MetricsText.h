#pragma once

#include <array>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Orv/Types.h"

namespace LspPingTool {

// Metrics in Prometheus' text exposition format (version 0.0.4), written
// family by family: a family's HELP and TYPE lines, then its samples, which
// must follow before the next family starts. Label values are escaped
// (backslash, double quote, line end), so any text may be one.
class MetricsText {
public:
  using Labels =
      std::initializer_list<std::pair<std::string_view, std::string_view>>;

  // The media type a scrape is answered with.
  static constexpr std::string_view contentType =
      "text/plain; version=0.0.4; charset=utf-8";

  // `type`: counter, gauge or histogram.
  void family(std::string_view name, std::string_view type,
              std::string_view help);
  void sample(std::string_view name, Labels labels, Orv::U64 value);
  void sample(std::string_view name, Labels labels, double value);
  // A histogram's samples: NAME_bucket for each upper bound of `bounds`
  // (counts not cumulated: `counts[i]` is what fell in bucket i, and
  // `counts` has one more, above the last bound), then NAME_sum and
  // NAME_count. `labels` must leave room for `le`.
  void histogram(std::string_view name, Labels labels,
                 std::span<const double> bounds,
                 std::span<const Orv::U64> counts, double sum);

  const std::string &text() const { return text_; }
  std::string take() { return std::move(text_); }
  void reserve(std::size_t bytes) { text_.reserve(bytes); }

private:
  void series(std::string_view name, Labels labels,
              std::pair<std::string_view, std::string_view> extra = {});
  void escaped(std::string_view value);
  // `value` and the line's end.
  void integer(Orv::U64 value);

  std::string text_;
  // The last histogram's name and bounds, and their texts: its bounds as
  // `le` values, and its series' names (_bucket, _sum, _count).
  std::string histogramName_;
  std::vector<double> bounds_;
  std::vector<std::string> les_;
  std::array<std::string, 3> suffixed_;
};

} // namespace LspPingTool
