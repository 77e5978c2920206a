#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tools/Pcap.h"

namespace LspPingTest {

// One JSON document per line of a tool's output.
inline std::vector<nlohmann::json> jsonLines(const std::string &text) {
  std::vector<nlohmann::json> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(nlohmann::json::parse(line));
  }
  return lines;
}

// Writes a capture file of `frames`, each stamped `seconds`.
inline void writeCapture(const std::filesystem::path &path,
                         const std::vector<std::vector<std::uint8_t>> &frames,
                         std::uint32_t seconds = 0, int linkType = DLT_EN10MB) {
  LspPingTool::PcapWriter writer(path.string(), linkType);
  for (const std::vector<std::uint8_t> &frame : frames) {
    writer.write(frame, seconds, 0);
  }
  EXPECT_TRUE(writer.close()) << writer.error();
}

// A test with a directory of its own for the files a tool writes, removed
// afterwards.
class ScratchDirTest : public testing::Test {
protected:
  explicit ScratchDirTest(const std::string &prefix) : prefix_(prefix) {}
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           (prefix_ + std::to_string(::getpid()));
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::filesystem::path path(const std::string &name) const {
    return dir_ / name;
  }

private:
  std::string prefix_;
  std::filesystem::path dir_;
};

} // namespace LspPingTest
