#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingDownstreamLabelEntry.h"
#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Orv/SparseArray.h"
#include "Orv/ValueText.h"

namespace LspPing {

// The label stack of one downstream mapping, top of stack at index 0.
// `size` says how many entries count; it is kept apart from the entries
// because a received TLV may hold entries past the stack's bottom.
struct LSPPING_EXPORT LspPingDownstreamLabelStack {
  using LabelEntryArray = Orv::SparseArray<U8, LspPingDownstreamLabelEntry>;

  LabelEntryArray labelEntry;
  U8 size = 0;

  void labelEntryIs(U8 index, const LspPingDownstreamLabelEntry &entry) {
    labelEntry.is(index, entry);
  }
  void labelEntryDel(U8 index) { labelEntry.del(index); }
  LabelEntryArray::const_iterator
  labelEntryDel(LabelEntryArray::const_iterator at) {
    return labelEntry.del(at);
  }
  void labelEntryDelAll() { labelEntry.delAll(); }

  // True when one of the first `size` entries is the bottom of the stack.
  bool valid() const;

  bool operator==(const LspPingDownstreamLabelStack &) const = default;
  bool operator!() const { return *this == LspPingDownstreamLabelStack(); }

  static constexpr std::string_view valueTypeName =
      "LspPing::LspPingDownstreamLabelStack";
  static constexpr auto valueFields = std::tuple{
      Orv::Field{"labelEntry", &LspPingDownstreamLabelStack::labelEntry},
      Orv::Field{"size", &LspPingDownstreamLabelStack::size}};
};

LSPPING_EXPORT std::ostream &
operator<<(std::ostream &os, const LspPingDownstreamLabelStack &stack);

LSPPING_EXPORT LspPingDownstreamLabelStack lspPingDownstreamLabelStackFactory();

} // namespace LspPing
