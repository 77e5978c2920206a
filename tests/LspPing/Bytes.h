#pragma once

#include <cstdint>
#include <vector>

#include "../TestSupport.h"
#include "Wirx/Pkt.h"

namespace LspPingTest {

using TestSupport::hexBytes;

inline Orv::Ptr<Wirx::Pkt> pktOf(const std::vector<std::uint8_t> &bytes) {
  return Wirx::Pkt::copyOf(bytes.data(), static_cast<Orv::U32>(bytes.size()));
}

template <class Record>
const Record &overlay(const std::vector<std::uint8_t> &bytes) {
  return *reinterpret_cast<const Record *>(bytes.data());
}

} // namespace LspPingTest
