#include <gtest/gtest.h>

#include <vector>

#include "Orv/Reactor.h"
#include "Wirx/MemPam.h"

namespace {

using Frames = std::vector<Wirx::MemPam::Frame>;

Orv::Ptr<Wirx::Pkt> frame(std::vector<Orv::U8> bytes) {
  return Wirx::Pkt::copyOf(bytes.data(), Orv::U32(bytes.size()));
}

TEST(MemPam, RecordsWhatWasSentAsItWasThenUpToItsLimit) {
  auto pam = Orv::make<Wirx::MemPam>("mem", 3);
  struct Writer : Orv::Reactor {
    int writable = 0;
  } writer;
  writer.watch(*pam, Wirx::Pam::writableCountAttr, [&] { ++writer.writable; });
  auto pkt = frame({1, 2, 3});
  pam->txPktIs(pkt);
  pkt->data()[0] = 9; // a sender reusing its buffer
  pam->txPktIs(pkt);
  EXPECT_EQ(pkt->refCount(), 1u) << "the module lets the packet go";
  for (Orv::U8 i = 0; i < 3; ++i) {
    pam->txPktIs(frame({i}));
  }
  EXPECT_EQ(pam->frames(), (Frames{{1, 2, 3}, {9, 2, 3}, {0}}));
  EXPECT_EQ(pam->txDrops(), 2u);
  pam->clear();
  pam->clear();
  EXPECT_EQ(writer.writable, 1) << "room again, once";
  EXPECT_TRUE(pam->frames().empty());
}

TEST(MemPam, ReadersTakeInjectedFramesInOrder) {
  auto pam = Orv::make<Wirx::MemPam>("mem");
  auto first = frame({1});
  auto second = frame({2});
  // Queued before anyone reads: both wait.
  pam->rxPktIs(first);
  pam->rxPktIs(second);
  EXPECT_EQ(pam->readableCount(), 2u);
  struct Reader : Orv::Reactor {
    std::vector<Orv::Ptr<Wirx::Pkt>> got;
  } reader;
  reader.watch(*pam, Wirx::Pam::readableCountAttr, [&] {
    while (auto pkt = pam->rxPkt()) {
      reader.got.push_back(pkt);
    }
  });
  auto third = frame({3});
  pam->rxPktIs(third);
  EXPECT_EQ(reader.got,
            (std::vector<Orv::Ptr<Wirx::Pkt>>{first, second, third}));
  EXPECT_EQ(pam->rxQueued(), 0u);
}

} // namespace
