#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

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
