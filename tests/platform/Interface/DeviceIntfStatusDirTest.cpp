#include <gtest/gtest.h>

#include <vector>

#include "Interface/DeviceIntfStatusDir.h"
#include "Orv/Reactor.h"

namespace {

using Interface::DeviceIntfStatusEntry;
using Wirx::IntfId;

// An interface coming up has its device before its status: the entry is
// there all the same. An unknown interface reads as the empty entry.
TEST(DeviceIntfStatusDir, EntriesAndOneNotificationPerChange) {
  auto dir = Orv::make<Interface::DeviceIntfStatusDir>("disd");
  struct Watcher : Orv::Reactor {
    std::vector<IntfId> changed;
  } watcher;
  watcher.watch(*dir, Interface::DeviceIntfStatusDir::entryAttr,
                [&](const IntfId &intf) { watcher.changed.push_back(intf); });
  const IntfId et1("Ethernet1");
  auto status = Orv::make<Interface::IntfStatus>(et1);
  dir->entryIs(et1, DeviceIntfStatusEntry{nullptr, "et1"});
  dir->entryIs(et1, DeviceIntfStatusEntry{nullptr, "et1"});
  EXPECT_FALSE(!dir->entry(et1));
  dir->entryIs(et1, DeviceIntfStatusEntry{status, "et1"});
  EXPECT_EQ(dir->entry(et1).intfStatus, status);
  EXPECT_TRUE(!dir->entry(IntfId("Ethernet2")));
  dir->entryDel(et1);
  dir->entryDel(et1);
  EXPECT_EQ(watcher.changed, std::vector<IntfId>(3, et1));
  EXPECT_TRUE(dir->empty());
}

} // namespace
