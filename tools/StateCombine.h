#pragma once

#include <nlohmann/json.hpp>

namespace LspPingTool {

// Two state documents (docs/state-file.md) as one: `winner` with every
// entry of `other` that `winner` has none of under the same identity (a
// route's incoming label, a binding's table and FEC, an interface's name,
// a forwarding entry's FEC...). A label route taken from `other` brings
// its via set and vias along, under keys `winner` does not use. Both
// documents are valid ones: this only places entries. `other`'s entries
// are moved, not copied: pass it as an rvalue where it is not needed after.
nlohmann::json combineStates(nlohmann::json winner, nlohmann::json other);

} // namespace LspPingTool
