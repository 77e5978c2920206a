#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace LspPingTest {

using Bytes = std::vector<std::uint8_t>;

// A capture file of the examples folder, built here byte by byte so that the
// committed file can always be regenerated and checked.
struct ExampleCapture {
  std::string fileName;
  std::vector<Bytes> frames;
};

std::vector<ExampleCapture> exampleCaptures();

// The capture's frames in the classic pcap file format (Ethernet link type,
// microsecond time stamps, little-endian).
Bytes pcapFile(const ExampleCapture &capture);

} // namespace LspPingTest
