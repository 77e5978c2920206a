#include "Wirx/InternalIntfId.h"
#include "Wirx/MgmtIntfId.h"

#include <string_view>

namespace Wirx {

namespace {

// The class word, then a port designator that starts with a digit: a name
// that merely starts with the word ("ManagementVlan") is some other kind.
bool isOfClass(const IntfId &intf, std::string_view word) {
  const std::string_view name = intf.name();
  return name.size() > word.size() && name.starts_with(word) &&
         name[word.size()] >= '0' && name[word.size()] <= '9';
}

} // namespace

bool MgmtIntfId::isMgmtIntfId(const IntfId &intf) {
  return isOfClass(intf, "Management");
}

bool InternalIntfId::isInternalIntfId(const IntfId &intf) {
  return isOfClass(intf, "Internal");
}

} // namespace Wirx
