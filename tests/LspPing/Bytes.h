#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "Wirx/Pkt.h"

namespace LspPingTest {

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

inline Orv::Ptr<Wirx::Pkt> pktOf(const std::vector<std::uint8_t> &bytes) {
  return Wirx::Pkt::copyOf(bytes.data(), static_cast<Orv::U32>(bytes.size()));
}

template <class Record>
const Record &overlay(const std::vector<std::uint8_t> &bytes) {
  return *reinterpret_cast<const Record *>(bytes.data());
}

} // namespace LspPingTest
