#pragma once

#include "Orv/Types.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace Wirx {

// Walks a text form left to right for the fromString parsers. A step that
// does not find what it expects consumes nothing and reports failure, so a
// parser is a chain of steps that gives up at the first miss.
class TextCursor {
public:
  explicit TextCursor(std::string_view text) noexcept : rest_(text) {}

  bool atEnd() const noexcept { return rest_.empty(); }

  // Consumes `literal` if the text goes on with it.
  bool skip(std::string_view literal) noexcept {
    if (!rest_.starts_with(literal)) {
      return false;
    }
    rest_.remove_prefix(literal.size());
    return true;
  }

  // Consumes and returns the text before the first of `stops`, or all of it.
  std::string_view upTo(std::string_view stops) noexcept {
    const std::string_view token = rest_.substr(0, rest_.find_first_of(stops));
    rest_.remove_prefix(token.size());
    return token;
  }

  // Consumes plain decimal digits (no sign, no blanks) worth at most `max`.
  std::optional<Orv::U32> decimal(Orv::U32 max) noexcept {
    Orv::U32 value = 0;
    const auto [end, error] =
        std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    if (error != std::errc{} || value > max) {
      return std::nullopt;
    }
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return value;
  }

private:
  std::string_view rest_;
};

} // namespace Wirx
