#include <gtest/gtest.h>

#include "Wirx/InternalIntfId.h"
#include "Wirx/MgmtIntfId.h"

namespace {

using Wirx::InternalIntfId;
using Wirx::IntfId;
using Wirx::MgmtIntfId;

TEST(IntfIdClass, TheWordMustBeFollowedByAPortNumber) {
  EXPECT_TRUE(MgmtIntfId::isMgmtIntfId(IntfId("Management1")));
  EXPECT_TRUE(MgmtIntfId::isMgmtIntfId(IntfId("Management1/1")));
  EXPECT_FALSE(MgmtIntfId::isMgmtIntfId(IntfId("Management")));
  EXPECT_FALSE(MgmtIntfId::isMgmtIntfId(IntfId("ManagementVlan1")));
  EXPECT_FALSE(MgmtIntfId::isMgmtIntfId(IntfId("Ethernet1")));
  EXPECT_FALSE(MgmtIntfId::isMgmtIntfId(IntfId("Internal1")));
  EXPECT_FALSE(MgmtIntfId::isMgmtIntfId(IntfId()));

  EXPECT_TRUE(InternalIntfId::isInternalIntfId(IntfId("Internal1")));
  EXPECT_TRUE(InternalIntfId::isInternalIntfId(IntfId("Internal2/1")));
  EXPECT_FALSE(InternalIntfId::isInternalIntfId(IntfId("Internal")));
  EXPECT_FALSE(InternalIntfId::isInternalIntfId(IntfId("InternalLink1")));
  EXPECT_FALSE(InternalIntfId::isInternalIntfId(IntfId("Management1")));
  EXPECT_FALSE(InternalIntfId::isInternalIntfId(IntfId()));
}

} // namespace
