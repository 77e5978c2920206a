#include "tools/Pcap.h"

namespace LspPingTool {

namespace {

// Large enough for any frame the tool reads or writes.
constexpr int snapLen = 65535;

} // namespace

PcapReader::PcapReader(const std::string &path) {
  char err[PCAP_ERRBUF_SIZE] = "";
  pcap_ = pcap_open_offline(path.c_str(), err);
  if (pcap_ == nullptr) {
    error_ = err;
  }
}

PcapReader::~PcapReader() {
  if (pcap_ != nullptr) {
    pcap_close(pcap_);
  }
}

int PcapReader::linkType() const {
  return pcap_ != nullptr ? pcap_datalink(pcap_) : -1;
}

bool PcapReader::next(std::span<const std::uint8_t> &frame) {
  if (pcap_ == nullptr) {
    return false;
  }
  pcap_pkthdr *hdr = nullptr;
  const std::uint8_t *bytes = nullptr;
  const int rc = pcap_next_ex(pcap_, &hdr, &bytes);
  if (rc == 1) {
    frame = {bytes, hdr->caplen};
    return true;
  }
  if (rc != PCAP_ERROR_BREAK) {
    error_ = pcap_geterr(pcap_);
  }
  return false;
}

PcapWriter::PcapWriter(const std::string &path, int linkType) {
  pcap_ = pcap_open_dead(linkType, snapLen);
  if (pcap_ == nullptr) {
    error_ = "cannot set up a capture of link type " + std::to_string(linkType);
    return;
  }
  dumper_ = pcap_dump_open(pcap_, path.c_str());
  if (dumper_ == nullptr) {
    error_ = pcap_geterr(pcap_);
  }
}

PcapWriter::~PcapWriter() {
  if (dumper_ != nullptr) {
    pcap_dump_close(dumper_);
  }
  if (pcap_ != nullptr) {
    pcap_close(pcap_);
  }
}

void PcapWriter::write(std::span<const std::uint8_t> frame,
                       std::uint32_t seconds, std::uint32_t micros) {
  if (dumper_ == nullptr) {
    return;
  }
  pcap_pkthdr hdr{};
  hdr.ts.tv_sec = seconds;
  hdr.ts.tv_usec = micros;
  hdr.caplen = static_cast<bpf_u_int32>(frame.size());
  hdr.len = hdr.caplen;
  pcap_dump(reinterpret_cast<u_char *>(dumper_), &hdr, frame.data());
}

} // namespace LspPingTool
