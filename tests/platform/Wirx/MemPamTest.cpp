#include <gtest/gtest.h>

#include <vector>

#include "Orv/Reactor.h"
#include "Wirx/MemPam.h"

namespace {

Orv::Ptr<Wirx::Pkt> frame(std::vector<Orv::U8> bytes) {
  return Wirx::Pkt::copyOf(bytes.data(), Orv::U32(bytes.size()));
}

TEST(MemPam, RecordsWhatWasSentAsItWasThen) {
  auto pam = Orv::make<Wirx::MemPam>("mem");
  EXPECT_EQ(pam->name().stringValue(), "mem");
  EXPECT_EQ(pam->writableCount(), 1u);
  auto pkt = frame({1, 2, 3});
  pam->txPktIs(pkt);
  pkt->data()[0] = 9; // a sender reusing its buffer
  pam->txPktIs(pkt);
  pam->txPktIs(frame({}));
  EXPECT_EQ(pam->frames(),
            (std::vector<Wirx::MemPam::Frame>{{1, 2, 3}, {9, 2, 3}, {}}));
  EXPECT_EQ(pkt->refCount(), 1u) << "the module lets the packet go";
  pam->clear();
  EXPECT_TRUE(pam->frames().empty());
  EXPECT_EQ(pam->txDrops(), 0u);
}

TEST(MemPam, DropsPastItsLimitUntilCleared) {
  auto pam = Orv::make<Wirx::MemPam>("mem", 2);
  struct Writer : Orv::Reactor {
    int writable = 0;
  } writer;
  writer.watch(*pam, Wirx::Pam::writableCountAttr, [&] { ++writer.writable; });
  for (Orv::U8 i = 0; i < 4; ++i) {
    pam->txPktIs(frame({i}));
  }
  EXPECT_EQ(pam->frames(), (std::vector<Wirx::MemPam::Frame>{{0}, {1}}));
  EXPECT_EQ(pam->txDrops(), 2u);
  pam->clear();
  EXPECT_EQ(writer.writable, 1) << "room again";
  pam->clear();
  EXPECT_EQ(writer.writable, 1);
  pam->frameLimitIs(Wirx::MemPam::unlimited);
  pam->txPktIs(frame({4}));
  EXPECT_EQ(pam->frames().size(), 1u);
  EXPECT_EQ(pam->txDrops(), 2u);
}

TEST(MemPam, ReadersTakeInjectedFramesInOrder) {
  auto pam = Orv::make<Wirx::MemPam>("mem");
  EXPECT_EQ(pam->rxPkt(), nullptr);
  auto first = frame({1});
  auto second = frame({2});
  // Queued before anyone reads: both wait.
  pam->rxPktIs(first);
  pam->rxPktIs(second);
  EXPECT_EQ(pam->readableCount(), 2u);
  EXPECT_EQ(pam->rxQueued(), 2u);
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
  EXPECT_EQ(pam->rxPkt(), nullptr);
}

} // namespace
