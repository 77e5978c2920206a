#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Orv/SparseArray.h"
#include "Orv/ValueText.h"

namespace LspPing {

// The downstream mappings of one reply, in the order they are written,
// index 0 first. The index being 8-bit, a set holds at most 256 mappings.
struct LspPingDownstreamMappingInfoSet {
  using InfoArray = Orv::SparseArray<U8, LspPingDownstreamMappingInfo>;

  InfoArray lspPingDownstreamMappingInfo;

  void
  lspPingDownstreamMappingInfoIs(U8 index,
                                 const LspPingDownstreamMappingInfo &info) {
    lspPingDownstreamMappingInfo.is(index, info);
  }
  void lspPingDownstreamMappingInfoDel(U8 index) {
    lspPingDownstreamMappingInfo.del(index);
  }
  InfoArray::const_iterator
  lspPingDownstreamMappingInfoDel(InfoArray::const_iterator at) {
    return lspPingDownstreamMappingInfo.del(at);
  }
  void lspPingDownstreamMappingInfoDelAll() {
    lspPingDownstreamMappingInfo.delAll();
  }

  bool operator==(const LspPingDownstreamMappingInfoSet &) const = default;
  // True when every index reads as the default mapping.
  bool operator!() const { return *this == LspPingDownstreamMappingInfoSet(); }

  static constexpr std::string_view valueTypeName =
      "LspPing::LspPingDownstreamMappingInfoSet";
  static constexpr auto valueFields = std::tuple{Orv::Field{
      "lspPingDownstreamMappingInfo",
      &LspPingDownstreamMappingInfoSet::lspPingDownstreamMappingInfo}};
};

LSPPING_EXPORT std::ostream &
operator<<(std::ostream &os, const LspPingDownstreamMappingInfoSet &set);

LSPPING_EXPORT LspPingDownstreamMappingInfoSet
lspPingDownstreamMappingInfoSetFactory();

} // namespace LspPing
