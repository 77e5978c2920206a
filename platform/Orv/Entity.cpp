#include "Orv/Entity.h"

#include <algorithm>

#include "Orv/Reactor.h"

namespace Orv {

Entity::~Entity() {
  for (const auto &watch : watches_) {
    if (watch->reactor) {
      watch->reactor->forget(watch.get());
    }
  }
}

void Entity::notify(AttrId attr, const void *key) const {
  // Keep this entity alive through the walk: a callback may drop the last
  // outside reference. Entities not (yet) held by a Ptr are left alone.
  Ptr<const Entity> keep = refCount() ? Ptr<const Entity>(this) : nullptr;
  ++notifying_;
  // Watches added by a callback are not called for this change.
  const std::size_t count = watches_.size();
  for (std::size_t i = 0; i < count; ++i) {
    Watch *watch = watches_[i].get();
    if (watch->reactor && (watch->anyAttr || watch->attr == attr)) {
      watch->callback(attr, key);
    }
  }
  if (--notifying_ == 0) {
    compact();
  }
}

Entity::Watch *
Entity::addWatch(Reactor *reactor, AttrId attr, bool anyAttr,
                 std::function<void(AttrId, const void *)> callback) const {
  watches_.push_back(std::make_unique<Watch>(
      Watch{this, reactor, attr, anyAttr, std::move(callback)}));
  return watches_.back().get();
}

void Entity::dropWatch(Watch *watch) const {
  watch->reactor = nullptr;
  if (notifying_ == 0) {
    compact();
  }
}

void Entity::compact() const {
  std::erase_if(watches_, [](const auto &w) { return w->reactor == nullptr; });
}

Reactor::~Reactor() {
  for (Entity::Watch *watch : watches_) {
    watch->entity->dropWatch(watch);
  }
}

void Reactor::add(const Entity &entity, AttrId attr, bool anyAttr,
                  std::function<void(AttrId, const void *)> callback) {
  watches_.push_back(entity.addWatch(this, attr, anyAttr, std::move(callback)));
}

void Reactor::unwatch(const Entity &entity) {
  std::erase_if(watches_, [&entity](Entity::Watch *watch) {
    if (watch->entity != &entity) {
      return false;
    }
    entity.dropWatch(watch);
    return true;
  });
}

void Reactor::forget(Entity::Watch *watch) { std::erase(watches_, watch); }

} // namespace Orv
