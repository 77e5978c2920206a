#include "Orv/Factory.h"

#include <map>
#include <string>

namespace Orv {

namespace {

std::map<std::string, FactoryFn, std::less<>> &factories() {
  static std::map<std::string, FactoryFn, std::less<>> table;
  return table;
}

} // namespace

void factoryIs(std::string_view typeName, FactoryFn fn) {
  factories()[std::string(typeName)] = fn;
}

Ptr<Object> create(std::string_view typeName, const Name &name) {
  auto it = factories().find(typeName);
  return it == factories().end() ? nullptr : it->second(name);
}

} // namespace Orv
