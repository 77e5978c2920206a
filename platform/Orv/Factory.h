#pragma once

#include <string_view>

#include "Orv/Export.h"
#include "Orv/Name.h"
#include "Orv/Object.h"

namespace Orv {

// Creates a runtime object of one type from a name.
using FactoryFn = Ptr<Object> (*)(const Name &name);

// The runtime's table of factories, by full type name ("LspPing::LspPamPipe"),
// by which the hosting agent creates objects it only knows by name.
LSPPING_EXPORT void factoryIs(std::string_view typeName, FactoryFn fn);
// A new object of the named type, or null when no factory is registered.
LSPPING_EXPORT Ptr<Object> create(std::string_view typeName, const Name &name);

// Registers a factory when a static of this type is constructed.
struct FactoryRegistration {
  FactoryRegistration(std::string_view typeName, FactoryFn fn) {
    factoryIs(typeName, fn);
  }
};

} // namespace Orv
