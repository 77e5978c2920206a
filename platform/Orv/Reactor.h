#pragma once

#include <utility>
#include <vector>

#include "Orv/Entity.h"
#include "Orv/Export.h"

namespace Orv {

// Watches attributes and collections of entities and runs its callbacks
// synchronously when they change. Destroying a reactor, or one of the
// entities it watches, at any time (even inside a notification) is safe.
class LSPPING_EXPORT Reactor {
public:
  Reactor() = default;
  Reactor(const Reactor &) = delete;
  Reactor &operator=(const Reactor &) = delete;
  virtual ~Reactor();

  // Calls `fn()` when attribute `attr` of `entity` changes.
  template <class T, class F>
  void watch(const Entity &entity, Attr<T> attr, F fn) {
    add(entity, attr.id, false,
        [fn = std::move(fn)](AttrId, const void *) { fn(); });
  }

  // Calls `fn(key)` for each key added to, changed in or removed from the
  // collection `attr` of `entity`.
  template <class K, class F>
  void watch(const Entity &entity, CollAttr<K> attr, F fn) {
    add(entity, attr.id, false, [fn = std::move(fn)](AttrId, const void *key) {
      fn(*static_cast<const K *>(key));
    });
  }

  // Calls `fn(attr)` for a change of any attribute of `entity`.
  template <class F> void watchAll(const Entity &entity, F fn) {
    add(entity, 0, true,
        [fn = std::move(fn)](AttrId attr, const void *) { fn(attr); });
  }

  // Stops watching `entity`.
  void unwatch(const Entity &entity);

private:
  friend class Entity;
  void add(const Entity &entity, AttrId attr, bool anyAttr,
           std::function<void(AttrId, const void *)> callback);
  void forget(Entity::Watch *watch);

  std::vector<Entity::Watch *> watches_;
};

} // namespace Orv
