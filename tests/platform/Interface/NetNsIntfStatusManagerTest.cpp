#include <gtest/gtest.h>

#include "Interface/NetNsIntfStatusManagerRoot.h"

namespace {

using Interface::DeviceIntfStatusDir;
using KernelNetInfo::KernelIntf;
using Wirx::IntfId;
using Wirx::NamespaceName;

const IntfId et1("Ethernet1");
const IntfId et2("Ethernet2");
const IntfId et3("Ethernet3");
const IntfId ma1("Management1");
const NamespaceName defaultNs = NamespaceName::defaultNamespace();
const NamespaceName blueNs("blue");

struct NetNsIntfStatusManagerTest : ::testing::Test {
  Orv::Ptr<Interface::AllIntfStatusDir> all =
      Orv::make<Interface::AllIntfStatusDir>("all");
  Orv::Ptr<Interface::AllIntfStatusLocalDir> local =
      Orv::make<Interface::AllIntfStatusLocalDir>("local");
  Orv::Ptr<KernelNetInfo::Status> kni = Orv::make<KernelNetInfo::Status>("kni");
  Orv::Ptr<DeviceIntfStatusDir> disd = Orv::make<DeviceIntfStatusDir>("disd");

  Orv::Ptr<Interface::NetNsIntfStatusManagerRoot> root(bool filterByNetNs) {
    return Orv::make<Interface::NetNsIntfStatusManagerRoot>(all, local,
                                                            filterByNetNs);
  }
};

// What is there before the manager starts is taken in at once; an interface
// without a kernel device is not in the directory, one whose status is not
// published yet is, with its device only.
TEST_F(NetNsIntfStatusManagerTest, StartsFromWhatTheKernelAndManagerPublished) {
  all->intfStatusIs(et1)->mtuIs(9214);
  all->intfStatusIs(et3);
  local->intfStatusIs(ma1)->mtuIs(1500);
  kni->kernelIntfIs(et1, KernelIntf{"et1", defaultNs});
  kni->kernelIntfIs(et2, KernelIntf{"et2", blueNs});
  kni->kernelIntfIs(ma1, KernelIntf{"ma1", defaultNs});
  // Left over from an earlier run: the device is gone since.
  disd->entryIs(IntfId("Ethernet9"), {nullptr, "et9"});

  auto unfiltered = root(false);
  auto manager = unfiltered->intfStatusManagerIs(disd, kni, defaultNs);
  EXPECT_EQ(unfiltered->intfStatusManagerIs(disd, kni, defaultNs), manager);

  EXPECT_EQ(disd->size(), 3u);
  ASSERT_TRUE(disd->entry(et1).intfStatus);
  EXPECT_EQ(disd->entry(et1).intfStatus->mtu(), 9214u);
  EXPECT_EQ(disd->entry(et1).deviceName, "et1");
  EXPECT_EQ(disd->entry(et2).deviceName, "et2") << "not filtered by namespace";
  EXPECT_FALSE(disd->entry(et2).intfStatus);
  EXPECT_EQ(disd->entry(ma1).intfStatus, local->intfStatus(ma1));
  EXPECT_TRUE(!disd->entry(et3));

  auto blueDisd = Orv::make<DeviceIntfStatusDir>("blueDisd");
  auto filtered = root(true);
  filtered->intfStatusManagerIs(blueDisd, kni, blueNs);
  EXPECT_EQ(blueDisd->size(), 1u);
  EXPECT_EQ(blueDisd->entry(et2).deviceName, "et2");
}

TEST_F(NetNsIntfStatusManagerTest, FollowsDevicesAndStatuses) {
  auto filtered = root(true);
  filtered->intfStatusManagerIs(disd, kni, defaultNs);

  kni->kernelIntfIs(et1, KernelIntf{"et1", defaultNs});
  EXPECT_EQ(disd->entry(et1).deviceName, "et1");
  EXPECT_FALSE(disd->entry(et1).intfStatus);

  const auto systemStatus = all->intfStatusIs(et1);
  EXPECT_EQ(disd->entry(et1).intfStatus, systemStatus);
  const auto localStatus = local->intfStatusIs(et1);
  EXPECT_EQ(disd->entry(et1).intfStatus, localStatus) << "local status wins";
  local->intfStatusDel(et1);
  EXPECT_EQ(disd->entry(et1).intfStatus, systemStatus);

  kni->kernelIntfIs(et1, KernelIntf{"et1", blueNs});
  EXPECT_TRUE(!disd->entry(et1)) << "device moved to another namespace";
  kni->kernelIntfIs(et1, KernelIntf{"et1a", defaultNs});
  EXPECT_EQ(disd->entry(et1).deviceName, "et1a");
  kni->kernelIntfDel(et1);
  EXPECT_TRUE(disd->empty());
  all->intfStatusDel(et1);
  EXPECT_TRUE(disd->empty());
}

} // namespace
