#pragma once

// Running tshark, an independent dissector, over captures of our frames, and
// what it may say about them that is no fault of theirs.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "RunProgram.h"

namespace LspPingTest {

inline bool tsharkInstalled() {
  return runCommand("command -v tshark >/dev/null 2>&1").status == 0;
}

// One line per frame: the values of `fields`, separated by ';', several
// occurrences of a field joined by '|'. The IPv4 and UDP checksums are
// validated (status 1 is good, 2 bad).
inline std::vector<std::string>
dissect(const std::filesystem::path &capture,
        const std::vector<std::string> &fields) {
  std::string command =
      "tshark -r " + quoted(capture) +
      " -o ip.check_checksum:TRUE -o udp.check_checksum:TRUE"
      " -T fields -E separator=';' -E aggregator='|' -E occurrence=a";
  for (const std::string &field : fields) {
    command += " -e " + field;
  }
  std::istringstream output(runCommand(command + " 2>/dev/null").output);
  std::vector<std::string> lines;
  for (std::string line; std::getline(output, line);) {
    lines.push_back(line);
  }
  return lines;
}

inline std::vector<std::string> split(const std::string &line, char separator) {
  std::vector<std::string> parts;
  std::istringstream in(line);
  for (std::string part; std::getline(in, part, separator);) {
    parts.push_back(part);
  }
  if (!line.empty() && line.back() == separator) {
    parts.emplace_back();
  }
  return parts;
}

// The fields whose values expectSound() takes, in its argument order.
inline const std::vector<std::string> soundnessFields = {
    "_ws.malformed", "_ws.expert.severity", "_ws.expert.message"};

// What the dissector says about our frames that is not a fault of theirs:
// each expert message allowed, with the reason we send what it remarks on.
inline const std::map<std::string, std::string> allowedExpertMessages = {
    {"\"Time To Live\" only 1",
     "requests leave with IP TTL 1, so that one that leaves its LSP is not "
     "routed on (RFC 8029)"},
    {"Incorrect address type for TLV?",
     "the dissector knows TLV type 7 only in its IPv4 form; RFC 8029 gives "
     "the one Interface and Label Stack type both families, and our IPv6 "
     "replies carry address type 3 in it"},
};

// The frame was not found malformed, nothing was remarked on at error level
// or above (below is a note or a warning), and every remark is allowed.
inline void expectSound(const std::string &malformed,
                        const std::string &severities,
                        const std::string &messages) {
  constexpr long errorSeverity = 0x00800000;
  EXPECT_EQ(malformed, "") << "malformed";
  for (const std::string &severity : split(severities, '|')) {
    EXPECT_LT(std::stol(severity), errorSeverity) << messages;
  }
  for (const std::string &message : split(messages, '|')) {
    EXPECT_TRUE(allowedExpertMessages.contains(message)) << message;
  }
}

} // namespace LspPingTest
