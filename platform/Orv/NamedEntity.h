#pragma once

#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/Name.h"

namespace Orv {

// An entity known by a name, as the hosting agent mounts it.
class LSPPING_EXPORT NamedEntity : public Entity {
public:
  explicit NamedEntity(const Name &name) : name_(name) {}
  const Name &name() const { return name_; }

private:
  Name name_;
};

} // namespace Orv
