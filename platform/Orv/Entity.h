#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Orv/Export.h"
#include "Orv/Object.h"

namespace Orv {

using AttrId = U16;

// Typed names of an entity's attributes, so that a reactor's callback gets
// the right argument: a plain attribute notifies with nothing, a keyed
// collection with the key that was added, changed or removed.
template <class T> struct Attr { AttrId id; };
template <class K> struct CollAttr { AttrId id; };

class Reactor;

// A reference-counted object with attributes. A setter that changes a value
// notifies the entity's watchers synchronously; one that stores an equal value
// does not.
class LSPPING_EXPORT Entity : public Object {
public:
  ~Entity() override;

  // The parent that owns this entity (a collection's owner), if any.
  const Entity *parent() const { return parent_; }
  void parentIs(const Entity *parent) { parent_ = parent; }

protected:
  void notify(AttrId attr) const { notify(attr, nullptr); }
  template <class K> void notify(CollAttr<K> attr, const K &key) const {
    notify(attr.id, &key);
  }

  // Stores `value` in `field` and notifies `attr`, if it differs.
  template <class T, class V>
  bool assign(T &field, const V &value, Attr<T> attr) {
    if (field == value) {
      return false;
    }
    field = value;
    notify(attr.id);
    return true;
  }

private:
  friend class Reactor;
  template <class K, class V> friend class Coll;

  struct Watch {
    const Entity *entity;
    Reactor *reactor; // null once the reactor is gone
    AttrId attr;
    bool anyAttr;
    std::function<void(AttrId, const void *)> callback;
  };

  void notify(AttrId attr, const void *key) const;
  Watch *addWatch(Reactor *reactor, AttrId attr, bool anyAttr,
                  std::function<void(AttrId, const void *)> callback) const;
  void dropWatch(Watch *watch) const;
  void compact() const;

  const Entity *parent_ = nullptr;
  // Owned here, not by the reactor, so that a reactor may go away inside its
  // own callback: the watch is only marked dead until the walk is over.
  mutable std::vector<std::unique_ptr<Watch>> watches_;
  mutable U32 notifying_ = 0;
};

} // namespace Orv
