#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

#include "tools/Pcap.h"

namespace {

using Frame = std::vector<std::uint8_t>;

class PcapTest : public testing::Test {
protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("lspping-pcap-test-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string path(const std::string &name) const {
    return (dir_ / name).string();
  }

  std::filesystem::path dir_;
};

TEST_F(PcapTest, WrittenFramesReadBackWhole) {
  const std::vector<Frame> frames = {Frame(60, 0xab), Frame{1, 2, 3},
                                     Frame(1514, 0x5a)};
  {
    LspPingTool::PcapWriter writer(path("round.pcap"));
    ASSERT_TRUE(writer.ok()) << writer.error();
    std::uint32_t micros = 0;
    for (const Frame &frame : frames) {
      writer.write(frame, 1700000000u, micros++);
    }
  }
  LspPingTool::PcapReader reader(path("round.pcap"));
  ASSERT_TRUE(reader.ok()) << reader.error();
  EXPECT_EQ(reader.linkType(), DLT_EN10MB);
  std::vector<Frame> read;
  std::span<const std::uint8_t> frame;
  while (reader.next(frame)) {
    read.emplace_back(frame.begin(), frame.end());
  }
  EXPECT_EQ(reader.error(), "");
  EXPECT_EQ(read, frames);
}

TEST_F(PcapTest, FailuresAreReportedNotThrown) {
  LspPingTool::PcapReader missing(path("missing.pcap"));
  EXPECT_FALSE(missing.ok());
  EXPECT_NE(missing.error(), "");
  std::span<const std::uint8_t> frame;
  EXPECT_FALSE(missing.next(frame));

  LspPingTool::PcapWriter unwritable(path("no/such/dir.pcap"));
  EXPECT_FALSE(unwritable.ok());
  EXPECT_NE(unwritable.error(), "");
  unwritable.write(Frame(60, 0), 0, 0);
}

} // namespace
