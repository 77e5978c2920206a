#pragma once

#include <string>
#include <string_view>

#include "Orv/Export.h"
#include "Orv/Types.h"

namespace Orv {

// A cursor over a value's text form. Every read skips leading blanks and
// returns false, consuming nothing useful, when the text does not fit.
class LSPPING_EXPORT TextReader {
public:
  explicit TextReader(std::string_view text) : text_(text) {}

  bool literal(std::string_view expected);
  // A single-quoted string with backslash escapes.
  bool quoted(std::string &out);
  // A bare token: everything up to a blank, ',', ':', '}' or an unmatched ')'.
  bool token(std::string_view &out);
  // True when only blanks remain.
  bool atEnd();

private:
  void skipBlanks();
  std::string_view text_;
  std::size_t pos_ = 0;
};

} // namespace Orv
