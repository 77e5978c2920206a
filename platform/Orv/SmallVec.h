#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "Orv/Assert.h"

namespace Orv {

// A growable array whose first N elements live inline, so that the common
// small case (a packet's handful of TLVs) never calls the allocator.
template <class T, std::size_t N> class SmallVec {
public:
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  void push_back(const T &value) {
    if (size_ < N) {
      inline_[size_] = value;
    } else {
      overflow_.push_back(value);
    }
    ++size_;
  }

  T &operator[](std::size_t i) {
    ORV_ASSERT(i < size_);
    return i < N ? inline_[i] : overflow_[i - N];
  }
  const T &operator[](std::size_t i) const {
    ORV_ASSERT(i < size_);
    return i < N ? inline_[i] : overflow_[i - N];
  }

  void clear() {
    size_ = 0;
    overflow_.clear();
  }

private:
  std::array<T, N> inline_{};
  std::vector<T> overflow_;
  std::size_t size_ = 0;
};

} // namespace Orv
