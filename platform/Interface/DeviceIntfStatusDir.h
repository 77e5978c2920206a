#pragma once

#include <cstddef>
#include <unordered_map>

#include "Interface/DeviceIntfStatusEntry.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Wirx/IntfId.h"

namespace Interface {

// The interfaces of one network namespace that are backed by a kernel
// device, by interface: what readers consult for an interface's MTU or
// device. The interface manager keeps it filled; each change notifies
// entryAttr with the interface. Lookups are one hash probe.
class LSPPING_EXPORT DeviceIntfStatusDir : public Orv::NamedEntity {
public:
  using Map = std::unordered_map<Wirx::IntfId, DeviceIntfStatusEntry>;
  using const_iterator = Map::const_iterator;

  static constexpr Orv::CollAttr<Wirx::IntfId> entryAttr{1};

  explicit DeviceIntfStatusDir(const Orv::Name &name) : NamedEntity(name) {}

  // The entry of `intf`, or the empty entry when it has none.
  const DeviceIntfStatusEntry &entry(const Wirx::IntfId &intf) const;
  void entryIs(const Wirx::IntfId &intf, const DeviceIntfStatusEntry &entry);
  void entryDel(const Wirx::IntfId &intf);

  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  // Every entry, in no particular order.
  const_iterator begin() const { return entries_.begin(); }
  const_iterator end() const { return entries_.end(); }

private:
  Map entries_;
};

} // namespace Interface
