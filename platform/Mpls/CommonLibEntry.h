#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Orv/Export.h"
#include "Orv/SparseArray.h"
#include "Orv/Types.h"
#include "Orv/ValueText.h"
#include "Wirx/MplsLabel.h"

namespace Mpls {

// The label bindings of one FEC in a binding table: every label a
// protocol has bound to it, by label value, each with whether the binding
// is in use (a binding kept while a replacement is being signalled is not).
// A FEC usually has one or two, so they are kept in a small sorted array.
struct CommonLibEntry {
  using LabelArray = Orv::SparseArray<Orv::U32, bool>;

  LabelArray label;

  void labelIs(Wirx::MplsLabel value, bool inUse) {
    label.is(value.value(), inUse);
  }
  void labelDel(Wirx::MplsLabel value) { label.del(value.value()); }
  bool hasLabel(Wirx::MplsLabel value) const {
    return label.contains(value.value());
  }
  // False both for a label not bound and for one bound but not in use: the
  // array reads a missing label as false.
  bool labelInUse(Wirx::MplsLabel value) const { return label[value.value()]; }

  // The array treats a missing label like one stored as not in use, so two
  // entries that differ only by such labels compare equal.
  bool operator==(const CommonLibEntry &) const = default;
  bool operator!() const { return *this == CommonLibEntry(); }

  static constexpr std::string_view valueTypeName = "Mpls::CommonLibEntry";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"label", &CommonLibEntry::label}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const CommonLibEntry &entry);

} // namespace Mpls
