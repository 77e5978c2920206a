#pragma once

#include <map>

#include "Orv/Entity.h"

namespace Orv {

// A keyed collection attribute of an entity. Every key added, changed or
// removed notifies the owner's watchers with that key.
template <class K, class V> class Coll {
public:
  using Map = std::map<K, V>;
  using const_iterator = typename Map::const_iterator;

  Coll(const Entity &owner, CollAttr<K> attr) : owner_(owner), attr_(attr) {}
  Coll(const Coll &) = delete;
  Coll &operator=(const Coll &) = delete;

  // The value under `key`, or a default value when absent.
  V operator[](const K &key) const {
    auto it = map_.find(key);
    return it == map_.end() ? V() : it->second;
  }
  const V *find(const K &key) const {
    auto it = map_.find(key);
    return it == map_.end() ? nullptr : &it->second;
  }
  bool contains(const K &key) const { return map_.count(key) != 0; }
  std::size_t size() const { return map_.size(); }
  bool empty() const { return map_.empty(); }
  const_iterator begin() const { return map_.begin(); }
  const_iterator end() const { return map_.end(); }

  void is(const K &key, const V &value) {
    auto [it, added] = map_.try_emplace(key, value);
    if (!added) {
      if (it->second == value) {
        return;
      }
      it->second = value;
    }
    owner_.notify(attr_, key);
  }

  void del(const K &key) {
    if (map_.erase(key)) {
      owner_.notify(attr_, key);
    }
  }

  // Removes one key at a time so that watchers may edit the collection.
  void delAll() {
    while (!map_.empty()) {
      const K key = map_.begin()->first;
      map_.erase(map_.begin());
      owner_.notify(attr_, key);
    }
  }

private:
  const Entity &owner_;
  CollAttr<K> attr_;
  Map map_;
};

} // namespace Orv
