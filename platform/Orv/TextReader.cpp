#include "Orv/TextReader.h"

namespace Orv {

void TextReader::skipBlanks() {
  while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t')) {
    ++pos_;
  }
}

bool TextReader::literal(std::string_view expected) {
  skipBlanks();
  if (text_.substr(pos_, expected.size()) != expected) {
    return false;
  }
  pos_ += expected.size();
  return true;
}

bool TextReader::quoted(std::string &out) {
  skipBlanks();
  if (pos_ >= text_.size() || text_[pos_] != '\'') {
    return false;
  }
  out.clear();
  for (std::size_t i = pos_ + 1; i < text_.size(); ++i) {
    char c = text_[i];
    if (c == '\'') {
      pos_ = i + 1;
      return true;
    }
    if (c == '\\') {
      if (++i == text_.size()) {
        return false;
      }
      c = text_[i];
    }
    out.push_back(c);
  }
  return false;
}

bool TextReader::token(std::string_view &out) {
  skipBlanks();
  std::size_t end = pos_;
  int depth = 0; // an unnamed enum value reads "Type(7)"
  for (; end < text_.size(); ++end) {
    const char c = text_[end];
    if (c == '(') {
      ++depth;
    } else if (c == ')' && depth > 0) {
      --depth;
    } else if (std::string_view(" \t,:})").find(c) != std::string_view::npos) {
      break;
    }
  }
  if (end == pos_) {
    return false;
  }
  out = text_.substr(pos_, end - pos_);
  pos_ = end;
  return true;
}

bool TextReader::atEnd() {
  skipBlanks();
  return pos_ == text_.size();
}

} // namespace Orv
