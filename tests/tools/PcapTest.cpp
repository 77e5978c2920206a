#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "ToolTestSupport.h"
#include "tools/Pcap.h"

namespace {

using Frame = std::vector<std::uint8_t>;

class PcapTest : public LspPingTest::ScratchDirTest {
protected:
  PcapTest() : ScratchDirTest("lspping-pcap-test-") {}
};

TEST_F(PcapTest, WrittenFramesReadBackWhole) {
  const std::vector<Frame> frames = {Frame(60, 0xab), Frame{1, 2, 3},
                                     Frame(1514, 0x5a)};
  LspPingTest::writeCapture(path("round.pcap"), frames, 1700000000u);
  LspPingTool::PcapReader reader(path("round.pcap").string());
  ASSERT_TRUE(reader.ok()) << reader.error();
  std::vector<Frame> read;
  std::span<const std::uint8_t> frame;
  while (reader.next(frame)) {
    read.emplace_back(frame.begin(), frame.end());
  }
  EXPECT_EQ(reader.error(), "");
  EXPECT_EQ(read, frames);
}

} // namespace
