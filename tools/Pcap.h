#pragma once

#include <pcap/pcap.h>

#include <cstdint>
#include <span>
#include <string>

namespace LspPingTool {

// Reads the frames of a capture file, one at a time, in file order.
class PcapReader {
public:
  // Opens `path`; when that fails, ok() is false and error() says why.
  explicit PcapReader(const std::string &path);
  ~PcapReader();
  PcapReader(const PcapReader &) = delete;
  PcapReader &operator=(const PcapReader &) = delete;

  bool ok() const noexcept { return pcap_ != nullptr; }
  const std::string &error() const noexcept { return error_; }
  // The file's link-layer type: DLT_EN10MB for Ethernet.
  int linkType() const;

  // Points `frame` at the next frame's captured bytes, which stay valid until
  // the next call. False at the end of the file, or on a read error, after
  // which error() is not empty.
  bool next(std::span<const std::uint8_t> &frame);

private:
  pcap_t *pcap_ = nullptr;
  std::string error_;
};

// Writes a capture file of frames of one link-layer type.
class PcapWriter {
public:
  // Creates (or truncates) `path`; when that fails, ok() is false and error()
  // says why.
  explicit PcapWriter(const std::string &path, int linkType = DLT_EN10MB);
  ~PcapWriter();
  PcapWriter(const PcapWriter &) = delete;
  PcapWriter &operator=(const PcapWriter &) = delete;

  bool ok() const noexcept { return dumper_ != nullptr; }
  const std::string &error() const noexcept { return error_; }

  // Appends `frame`, whole, stamped `seconds` and `micros` past the epoch.
  void write(std::span<const std::uint8_t> frame, std::uint32_t seconds,
             std::uint32_t micros);

private:
  pcap_t *pcap_ = nullptr;
  pcap_dumper_t *dumper_ = nullptr;
  std::string error_;
};

} // namespace LspPingTool
