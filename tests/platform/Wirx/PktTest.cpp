#include "Wirx/Pkt.h"
#include "Wirx/PktPool.h"
#include "Wirx/UdpHdr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace Wirx {
namespace {

using Orv::U8;

TEST(PktTest, HeadersPrependedBeforePayloadMakeOneContiguousFrame) {
  EXPECT_EQ(Pkt::make()->headroom(), Pkt::defaultHeadroom);
  Orv::Ptr<Pkt> pkt = Pkt::make(16);
  std::memcpy(pkt->append(3), "abc", 3);
  std::memcpy(pkt->append(2), "de", 2);
  std::memcpy(pkt->prepend(2), "12", 2);
  UdpHdr *front = pkt->prependAs<UdpHdr>();
  EXPECT_EQ(reinterpret_cast<U8 *>(front), pkt->data());
  std::memcpy(front, "0_______", sizeof(UdpHdr));
  ASSERT_EQ(pkt->frontBytes(), 15u);
  EXPECT_EQ(std::memcmp(pkt->data(), "0_______12abcde", 15), 0);
  EXPECT_EQ(pkt->headroom(), 6u);
  EXPECT_EQ(pkt->tailroom(), Pkt::capacity - 16 - 5);

  pkt->trimFront(9);
  pkt->trimBack(1);
  EXPECT_EQ(std::memcmp(pkt->data(), "2abcd", 5), 0);
  EXPECT_EQ(pkt->headroom(), 15u);
  pkt->reset(100);
  EXPECT_EQ(pkt->frontBytes(), 0u);
  EXPECT_EQ(pkt->headroom(), 100u);
}

TEST(PktTest, CopyOfTakesFramesThatFitAndRefusesLargerOnes) {
  const std::vector<U8> frame(Pkt::capacity - 128, 0x5A);
  Orv::Ptr<Pkt> pkt = Pkt::copyOf(frame.data(), Orv::U32(frame.size()), 128);
  ASSERT_TRUE(pkt);
  EXPECT_EQ(pkt->frontBytes(), frame.size());
  EXPECT_EQ(pkt->tailroom(), 0u);
  EXPECT_EQ(std::memcmp(pkt->data(), frame.data(), frame.size()), 0);
  EXPECT_FALSE(Pkt::copyOf(frame.data(), Orv::U32(frame.size()), 129));
  EXPECT_FALSE(Pkt::copyOf(frame.data(), 0, Pkt::capacity + 1));
  EXPECT_TRUE(Pkt::copyOf(nullptr, 0));
}

TEST(PktTest, LastUnrefReturnsTheBufferForReuse) {
  PktPool &pool = PktPool::instance();
  pool.reserve(4);
  const Orv::U32 freeBefore = pool.freeCount();
  const Orv::U32 totalBefore = pool.totalCount();
  const Pkt *first = nullptr;
  {
    Orv::Ptr<Pkt> pkt = Pkt::make();
    first = pkt.get();
    Orv::Ptr<Pkt> copy = pkt;
    pkt = nullptr;
    EXPECT_EQ(pool.freeCount(), freeBefore - 1);
  }
  EXPECT_EQ(pool.freeCount(), freeBefore);
  EXPECT_EQ(Pkt::make().get(), first);
  EXPECT_EQ(pool.totalCount(), totalBefore);
}

TEST(PktTest, PoolGrowsWhenEmptyAndKeepsEveryBuffer) {
  PktPool &pool = PktPool::instance();
  std::vector<Orv::Ptr<Pkt>> held;
  const Orv::U32 total = pool.totalCount();
  for (Orv::U32 i = 0; i <= total; ++i) {
    held.push_back(pool.alloc());
  }
  EXPECT_EQ(pool.totalCount(), total + PktPool::blockPkts);
  held.clear();
  EXPECT_EQ(pool.freeCount(), pool.totalCount());
}

TEST(PktDeathTest, GrowingPastTheBufferIsAFault) {
  EXPECT_DEATH(Pkt::make(4)->prepend(5), "n <= headroom");
  EXPECT_DEATH(Pkt::make(Pkt::capacity)->append(1), "n <= tailroom");
  EXPECT_DEATH(Pkt::make()->trimFront(1), "n <= frontBytes");
}

} // namespace
} // namespace Wirx
