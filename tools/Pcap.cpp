#include "tools/Pcap.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tools/StandardOutput.h"

namespace LspPingTool {

namespace {

// Large enough for any frame the tool reads or writes.
constexpr int snapLen = 65535;

} // namespace

PcapReader::PcapReader(const std::string &path) : name_(inputName(path)) {
  FILE *file = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    fail(std::strerror(errno));
    return;
  }
  // A directory opens, and reads as an error only later.
  struct stat status {};
  if (::fstat(::fileno(file), &status) == 0 && S_ISDIR(status.st_mode)) {
    if (file != stdin) {
      std::fclose(file);
    }
    fail(std::strerror(EISDIR));
    return;
  }
  char err[PCAP_ERRBUF_SIZE] = "";
  pcap_ = pcap_fopen_offline(file, err);
  if (pcap_ == nullptr) {
    // libpcap keeps the file only when it can read it.
    if (file != stdin) {
      std::fclose(file);
    }
    fail(err);
    return;
  }
  const int linkType = pcap_datalink(pcap_);
  if (linkType != DLT_EN10MB) {
    const char *linkName = pcap_datalink_val_to_name(linkType);
    fail("link type " +
         (linkName ? std::string(linkName) : std::to_string(linkType)) +
         " is not Ethernet");
  }
}

PcapReader::~PcapReader() {
  if (pcap_ != nullptr) {
    pcap_close(pcap_);
  }
}

void PcapReader::fail(const std::string &reason) {
  if (error_.empty()) {
    error_ = name_ + ": " + reason;
  }
}

bool PcapReader::next(std::span<const std::uint8_t> &frame) {
  if (!ok()) {
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
    fail(pcap_geterr(pcap_));
  }
  return false;
}

PcapWriter::PcapWriter(const std::string &path, int linkType)
    : name_(outputName(path)) {
  pcap_ = pcap_open_dead(linkType, snapLen);
  if (pcap_ == nullptr) {
    fail("cannot set up a capture of link type " + std::to_string(linkType));
    return;
  }
  struct stat status {};
  if (path == "-") {
    file_ = stdout;
  } else if (::stat(path.c_str(), &status) != 0) {
    if (errno != ENOENT) {
      failWithErrno();
      return;
    }
    file_ = openBeside(path, std::nullopt);
  } else if (S_ISDIR(status.st_mode)) {
    fail(std::strerror(EISDIR));
    return;
  } else if (S_ISREG(status.st_mode)) {
    // Beside the file itself, so that a link to it stays one.
    std::error_code ec;
    const auto file = std::filesystem::canonical(path, ec);
    file_ = openBeside(ec ? path : file.string(), status.st_mode & 07777);
  } else {
    file_ = std::fopen(path.c_str(), "wb");
  }
  if (file_ == nullptr) {
    failWithErrno();
    return;
  }
  dumper_ = pcap_dump_fopen(pcap_, file_);
  if (dumper_ == nullptr) {
    fail(pcap_geterr(pcap_));
  }
}

PcapWriter::~PcapWriter() {
  discard();
  if (pcap_ != nullptr) {
    pcap_close(pcap_);
  }
}

void PcapWriter::fail(const std::string &reason) {
  if (error_.empty()) {
    error_ = name_ + ": " + reason;
  }
}

void PcapWriter::failWithErrno() { fail(std::strerror(errno)); }

FILE *PcapWriter::openBeside(const std::string &target,
                             std::optional<unsigned> mode) {
  const std::filesystem::path path(target);
  const std::string prefix = "." + path.filename().string() + ".lspping-" +
                             std::to_string(::getpid()) + "-";
  for (unsigned attempt = 0;; ++attempt) {
    const std::string candidate =
        (path.parent_path() / (prefix + std::to_string(attempt))).string();
    const int fd = ::open(candidate.c_str(),
                          O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
      if (errno != EEXIST || attempt == 100) {
        return nullptr;
      }
      continue;
    }
    temporary_ = candidate;
    target_ = target;
    // A file that replaces another keeps its mode, which the umask applied
    // at open() may have narrowed.
    FILE *file =
        !mode || ::fchmod(fd, *mode) == 0 ? ::fdopen(fd, "wb") : nullptr;
    if (file == nullptr) {
      const int error = errno;
      ::close(fd);
      errno = error;
    }
    return file;
  }
}

void PcapWriter::write(std::span<const std::uint8_t> frame,
                       std::uint32_t seconds, std::uint32_t micros) {
  if (!ok()) {
    return;
  }
  pcap_pkthdr hdr{};
  hdr.ts.tv_sec = seconds;
  hdr.ts.tv_usec = micros;
  hdr.caplen = static_cast<bpf_u_int32>(frame.size());
  hdr.len = hdr.caplen;
  pcap_dump(reinterpret_cast<u_char *>(dumper_), &hdr, frame.data());
  // pcap_dump() says nothing: a failed write shows on the stream, and errno
  // still tells why.
  if (std::ferror(file_)) {
    failWithErrno();
  }
}

bool PcapWriter::close() {
  if (ok() && pcap_dump_flush(dumper_) != 0) {
    failWithErrno();
  }
  // The dumper is the stream itself: closing the stream here, where the
  // result is seen, replaces pcap_dump_close(), which drops it.
  if (file_ != nullptr && file_ != stdout) {
    if (std::fclose(file_) != 0) {
      failWithErrno();
    }
  }
  file_ = nullptr;
  dumper_ = nullptr;
  if (ok() && !temporary_.empty()) {
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
      failWithErrno();
    } else {
      temporary_.clear();
    }
  }
  discard();
  return ok();
}

void PcapWriter::discard() {
  if (file_ != nullptr && file_ != stdout) {
    std::fclose(file_);
  }
  file_ = nullptr;
  dumper_ = nullptr;
  if (!temporary_.empty()) {
    std::remove(temporary_.c_str());
    temporary_.clear();
  }
}

} // namespace LspPingTool
