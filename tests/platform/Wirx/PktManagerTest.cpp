#include <gtest/gtest.h>

#include <vector>

#include "Wirx/PktManager.h"

namespace {

TEST(PktManager, RefusesPacketsPastItsLimitAndRecovers) {
  Wirx::PktManager &manager = Wirx::PktManager::instance();
  const Orv::U32 base = manager.pktsInUse();
  manager.pktLimitIs(base + 2);
  std::vector<Orv::Ptr<Wirx::Pkt>> held{manager.pktNew(), manager.pktNew(64)};
  EXPECT_TRUE(held[0] && held[1]);
  EXPECT_EQ(held[1]->headroom(), 64u);
  EXPECT_FALSE(manager.pktNew());
  held.pop_back();
  EXPECT_TRUE(manager.pktNew());
  manager.pktLimitIs(Wirx::PktManager::unlimited);
}

} // namespace
