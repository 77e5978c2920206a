#include "Interface/DeviceIntfStatusDir.h"

namespace Interface {

const DeviceIntfStatusEntry &
DeviceIntfStatusDir::entry(const Wirx::IntfId &intf) const {
  static const DeviceIntfStatusEntry emptyEntry;
  const auto it = entries_.find(intf);
  return it == entries_.end() ? emptyEntry : it->second;
}

void DeviceIntfStatusDir::entryIs(const Wirx::IntfId &intf,
                                  const DeviceIntfStatusEntry &entry) {
  const auto [it, added] = entries_.try_emplace(intf, entry);
  if (!added) {
    if (it->second == entry) {
      return;
    }
    it->second = entry;
  }
  notify(entryAttr, intf);
}

void DeviceIntfStatusDir::entryDel(const Wirx::IntfId &intf) {
  if (entries_.erase(intf)) {
    notify(entryAttr, intf);
  }
}

} // namespace Interface
