#include <gtest/gtest.h>

#include "Wirx/InternalIntfId.h"
#include "Wirx/MgmtIntfId.h"

namespace {

using Wirx::IntfId;

// The word must be followed by a port number.
TEST(IntfIdClass, ManagementAndInternalInterfacesByName) {
  const struct {
    const char *name;
    bool mgmt;
    bool internal;
  } cases[] = {{"Management1", true, false}, {"Management1/1", true, false},
               {"Management", false, false}, {"ManagementVlan1", false, false},
               {"Internal1", false, true},   {"Internal2/1", false, true},
               {"Internal", false, false},   {"InternalLink1", false, false},
               {"Ethernet1", false, false},  {"", false, false}};
  for (const auto &c : cases) {
    EXPECT_EQ(Wirx::MgmtIntfId::isMgmtIntfId(IntfId(c.name)), c.mgmt) << c.name;
    EXPECT_EQ(Wirx::InternalIntfId::isInternalIntfId(IntfId(c.name)),
              c.internal)
        << c.name;
  }
}

} // namespace
