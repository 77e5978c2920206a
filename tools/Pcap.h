#pragma once

#include <pcap/pcap.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

namespace LspPingTool {

// Reads the frames of a capture file of Ethernet frames, one at a time, in
// file order. Errors are whole lines but for the program's name: the file,
// once ("standard input" for "-"), then the reason.
class PcapReader {
public:
  // Opens `path`, "-" for standard input; when that fails, or the file
  // holds frames of another link layer, ok() is false and error() says why.
  explicit PcapReader(const std::string &path);
  ~PcapReader();
  PcapReader(const PcapReader &) = delete;
  PcapReader &operator=(const PcapReader &) = delete;

  bool ok() const noexcept { return pcap_ != nullptr && error_.empty(); }
  const std::string &error() const noexcept { return error_; }

  // Points `frame` at the next frame's captured bytes, which stay valid until
  // the next call. False at the end of the file, or on a read error, after
  // which error() is not empty.
  bool next(std::span<const std::uint8_t> &frame);

private:
  void fail(const std::string &reason);

  std::string name_;
  pcap_t *pcap_ = nullptr;
  std::string error_;
};

// Writes a capture file of frames of one link-layer type. A file is written
// beside its target and moved into place by close(), so that a run that
// fails leaves the target as it was, and never a part of a capture; what is
// not a file (standard output, "-", a device, a pipe) is written directly.
// Errors are as the reader's.
class PcapWriter {
public:
  // Starts writing to `path`; when that fails, ok() is false and error()
  // says why.
  explicit PcapWriter(const std::string &path, int linkType = DLT_EN10MB);
  // Removes what was written unless close() succeeded.
  ~PcapWriter();
  PcapWriter(const PcapWriter &) = delete;
  PcapWriter &operator=(const PcapWriter &) = delete;

  // False once anything failed.
  bool ok() const noexcept { return error_.empty(); }
  const std::string &error() const noexcept { return error_; }

  // Appends `frame`, whole, stamped `seconds` and `micros` past the epoch;
  // nothing once a write failed.
  void write(std::span<const std::uint8_t> frame, std::uint32_t seconds,
             std::uint32_t micros);
  // Flushes and closes the capture and puts it in place. False when that or
  // any write failed: the target is then left as it was.
  bool close();

private:
  void fail(const std::string &reason);
  void failWithErrno();
  // Opens a new file beside `target` for the capture, with the mode of the
  // file it replaces, if any.
  FILE *openBeside(const std::string &target, std::optional<unsigned> mode);
  void discard();

  std::string name_;
  // The file the capture goes to in the end, when written beside it.
  std::string target_;
  std::string temporary_;
  FILE *file_ = nullptr;
  pcap_t *pcap_ = nullptr;
  pcap_dumper_t *dumper_ = nullptr;
  std::string error_;
};

} // namespace LspPingTool
