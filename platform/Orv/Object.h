#pragma once

#include "Orv/Export.h"
#include "Orv/Types.h"

namespace Orv {

// Base of every reference-counted runtime object. Counting is not atomic:
// everything runs on the hosting agent's single event-loop thread.
class LSPPING_EXPORT Object {
public:
  Object() = default;
  Object(const Object &) = delete;
  Object &operator=(const Object &) = delete;

  void ref() const noexcept { ++refs_; }
  void unref() const noexcept {
    if (--refs_ == 0) {
      release();
    }
  }
  U32 refCount() const noexcept { return refs_; }

protected:
  virtual ~Object() = default;
  // Called when the last reference goes; pooled objects override it to
  // return themselves to their pool instead of the general allocator.
  virtual void release() const noexcept { delete this; }

private:
  mutable U32 refs_ = 0;
};

// Intrusive shared pointer to an Object.
template <class T> class Ptr {
public:
  Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {}
  Ptr(T *p) noexcept : p_(p) { acquire(); }
  Ptr(const Ptr &o) noexcept : p_(o.p_) { acquire(); }
  Ptr(Ptr &&o) noexcept : p_(o.p_) { o.p_ = nullptr; }
  template <class U> Ptr(const Ptr<U> &o) noexcept : p_(o.get()) { acquire(); }
  ~Ptr() { drop(); }

  Ptr &operator=(Ptr o) noexcept {
    T *old = p_;
    p_ = o.p_;
    o.p_ = old;
    return *this;
  }

  T *get() const noexcept { return p_; }
  T *operator->() const noexcept { return p_; }
  T &operator*() const noexcept { return *p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }
  bool operator!() const noexcept { return p_ == nullptr; }
  template <class U> bool operator==(const Ptr<U> &o) const noexcept {
    return p_ == o.get();
  }
  bool operator==(std::nullptr_t) const noexcept { return p_ == nullptr; }

private:
  void acquire() noexcept {
    if (p_) {
      p_->ref();
    }
  }
  void drop() noexcept {
    if (p_) {
      p_->unref();
    }
  }
  T *p_ = nullptr;
};

template <class T, class... Args> Ptr<T> make(Args &&...args) {
  return Ptr<T>(new T(static_cast<Args &&>(args)...));
}

} // namespace Orv
