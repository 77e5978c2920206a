#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

#include "Orv/Assert.h"
#include "Orv/Types.h"

namespace Orv {

// An array addressed by an unsigned index in which only some indices hold a
// value. Reading an index that holds none gives a default T, and equality
// treats a missing index as holding a default T, so storing a default value
// and storing nothing compare equal.
//
// The entries are kept in one sorted, contiguous run: the first
// InlineCount of them inside the object, more on the heap. Our arrays are
// small (a few labels, a few multipath bytes, one or two downstream
// mappings) and are copied along with the values holding them, so keeping
// small arrays off the heap matters more than insertion cost, and a sorted
// run gives index-order iteration and a binary-search lookup with no
// per-node allocation. The default InlineCount keeps the inline part near
// 64 bytes.
template <std::unsigned_integral Index, class T,
          std::size_t InlineCount =
              std::max<std::size_t>(1, 64 / sizeof(std::pair<Index, T>))>
class SparseArray {
public:
  struct Entry {
    Index index{};
    T value{};
  };
  using const_iterator = const Entry *;

  // Stores `value` at `index`, replacing what was there.
  void is(Index index, const T &value) {
    // Copied first: `value` may refer to an entry that the insertion moves.
    Entry entry{index, value};
    Entry *first = data();
    Entry *last = first + size();
    Entry *at = lowerBound(first, last, index);
    if (at != last && at->index == index) {
      at->value = std::move(entry.value);
      return;
    }
    const std::size_t pos = static_cast<std::size_t>(at - first);
    if (!heap_.empty()) {
      heap_.insert(heap_.begin() + static_cast<std::ptrdiff_t>(pos),
                   std::move(entry));
      return;
    }
    if (inlineCount_ < InlineCount) {
      std::move_backward(at, last, last + 1);
      *at = std::move(entry);
      ++inlineCount_;
      return;
    }
    heap_.reserve(2 * InlineCount + 1);
    heap_.assign(std::make_move_iterator(first), std::make_move_iterator(last));
    heap_.insert(heap_.begin() + static_cast<std::ptrdiff_t>(pos),
                 std::move(entry));
    clearInline();
  }

  void del(Index index) {
    const_iterator at = lowerBound(begin(), end(), index);
    if (at != end() && at->index == index) {
      del(at);
    }
  }

  // Removes the entry `at` points to; returns the entry after it.
  const_iterator del(const_iterator at) {
    ORV_ASSERT(at >= begin() && at < end());
    const std::size_t pos = static_cast<std::size_t>(at - begin());
    if (!heap_.empty()) {
      heap_.erase(heap_.begin() + static_cast<std::ptrdiff_t>(pos));
    } else {
      std::move(inline_.begin() + pos + 1, inline_.begin() + inlineCount_,
                inline_.begin() + pos);
      inline_[--inlineCount_] = Entry{};
    }
    return begin() + pos;
  }

  void delAll() {
    heap_.clear();
    clearInline();
  }

  // The value at `index`, or a default T when the index holds none.
  const T &operator[](Index index) const {
    const T *value = find(index);
    return value ? *value : defaultValue();
  }
  const T *find(Index index) const {
    const_iterator at = lowerBound(begin(), end(), index);
    return at != end() && at->index == index ? &at->value : nullptr;
  }
  bool contains(Index index) const { return find(index) != nullptr; }

  // Entries present, in index order.
  const_iterator begin() const { return data(); }
  const_iterator end() const { return data() + size(); }
  std::size_t size() const {
    return heap_.empty() ? inlineCount_ : heap_.size();
  }
  bool empty() const { return size() == 0; }

  // The index range: the lowest index in use and one past the highest; both
  // 0 when empty. Wider than Index, since one past the largest Index must
  // fit.
  U64 indexBegin() const { return empty() ? 0 : U64{begin()->index}; }
  U64 indexEnd() const { return empty() ? 0 : U64{(end() - 1)->index} + 1; }

  friend bool operator==(const SparseArray &a, const SparseArray &b) {
    const_iterator i = a.begin();
    const_iterator j = b.begin();
    while (i != a.end() || j != b.end()) {
      if (j == b.end() || (i != a.end() && i->index < j->index)) {
        if (!(i->value == defaultValue())) {
          return false;
        }
        ++i;
      } else if (i == a.end() || j->index < i->index) {
        if (!(j->value == defaultValue())) {
          return false;
        }
        ++j;
      } else {
        if (!(i->value == j->value)) {
          return false;
        }
        ++i;
        ++j;
      }
    }
    return true;
  }

private:
  static const T &defaultValue() {
    static const T value{};
    return value;
  }

  template <class It> static It lowerBound(It first, It last, Index index) {
    return std::lower_bound(
        first, last, index,
        [](const Entry &entry, Index key) { return entry.index < key; });
  }

  // The entries live in heap_ whenever it holds any, else in the first
  // inlineCount_ slots of inline_; unused inline slots hold default entries
  // so that they keep no resources of removed values.
  Entry *data() { return heap_.empty() ? inline_.data() : heap_.data(); }
  const Entry *data() const {
    return heap_.empty() ? inline_.data() : heap_.data();
  }

  void clearInline() {
    std::fill(inline_.begin(), inline_.begin() + inlineCount_, Entry{});
    inlineCount_ = 0;
  }

  std::array<Entry, InlineCount> inline_{};
  std::size_t inlineCount_ = 0;
  std::vector<Entry> heap_;
};

} // namespace Orv
