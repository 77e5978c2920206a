#include "tools/MetricsText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace LspPingTool {

namespace {

// A value as Prometheus reads it: the shortest text that reads back the
// same double, "+Inf" and "NaN" by name.
std::string number(double value) {
  if (std::isnan(value)) {
    return "NaN";
  }
  if (std::isinf(value)) {
    return value > 0 ? "+Inf" : "-Inf";
  }
  // Fixed notation where it stays short: bucket bounds read "0.0005".
  const double magnitude = std::fabs(value);
  const bool fixed = magnitude == 0 || (magnitude >= 1e-4 && magnitude < 1e15);
  char text[400];
  const auto end = fixed ? std::to_chars(text, text + sizeof text, value,
                                         std::chars_format::fixed)
                               .ptr
                         : std::to_chars(text, text + sizeof text, value).ptr;
  return std::string(text, end);
}

} // namespace

void MetricsText::family(std::string_view name, std::string_view type,
                         std::string_view help) {
  text_.append("# HELP ").append(name).append(" ");
  // HELP text escapes backslashes and line ends, not quotes.
  for (const char c : help) {
    text_ += c == '\\' ? "\\\\" : c == '\n' ? "\\n" : std::string(1, c);
  }
  text_.append("\n# TYPE ").append(name).append(" ").append(type) += '\n';
}

void MetricsText::sample(std::string_view name, Labels labels, Orv::U64 value) {
  series(name, labels);
  integer(value);
}

void MetricsText::integer(Orv::U64 value) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  text_.append(digits, end) += '\n';
}

void MetricsText::sample(std::string_view name, Labels labels, double value) {
  series(name, labels);
  text_.append(number(value)) += '\n';
}

void MetricsText::histogram(std::string_view name, Labels labels,
                            std::span<const double> bounds,
                            std::span<const Orv::U64> counts, double sum) {
  // A scrape writes the same histogram for thousands of series: its
  // names and bounds are written as text once.
  if (name != histogramName_ || !std::equal(bounds.begin(), bounds.end(),
                                            bounds_.begin(), bounds_.end())) {
    histogramName_ = name;
    bounds_.assign(bounds.begin(), bounds.end());
    les_.clear();
    for (const double bound : bounds) {
      les_.push_back(number(bound));
    }
    les_.emplace_back("+Inf");
    suffixed_ = {histogramName_ + "_bucket", histogramName_ + "_sum",
                 histogramName_ + "_count"};
  }
  Orv::U64 cumulated = 0;
  for (std::size_t i = 0; i <= bounds.size() && i < counts.size(); ++i) {
    cumulated += counts[i];
    series(suffixed_[0], labels, {"le", les_[i]});
    integer(cumulated);
  }
  sample(suffixed_[1], labels, sum);
  sample(suffixed_[2], labels, cumulated);
}

void MetricsText::series(std::string_view name, Labels labels,
                         std::pair<std::string_view, std::string_view> extra) {
  text_.append(name);
  if (labels.size() == 0 && extra.first.empty()) {
    text_ += ' ';
    return;
  }
  char separator = '{';
  const auto label = [&](std::string_view key, std::string_view value) {
    text_ += separator;
    text_.append(key).append("=\"");
    escaped(value);
    text_ += '"';
    separator = ',';
  };
  for (const auto &[key, value] : labels) {
    label(key, value);
  }
  if (!extra.first.empty()) {
    label(extra.first, extra.second);
  }
  text_.append("} ");
}

// Label values are mostly plain: appended a run at a time.
void MetricsText::escaped(std::string_view value) {
  for (;;) {
    const std::size_t special = value.find_first_of("\\\"\n");
    text_.append(value.substr(0, special));
    if (special == std::string_view::npos) {
      return;
    }
    const char c = value[special];
    text_.append(c == '\n' ? "\\n" : c == '"' ? "\\\"" : "\\\\");
    value.remove_prefix(special + 1);
  }
}

} // namespace LspPingTool
