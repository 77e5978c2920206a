#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Orv/ValueText.h"
#include "Ruvo/CorruptionDetectedException.h"
#include "Ruvo/CorruptionHandler.h"

namespace Ruvo {

// A hashed table as the forwarding agents publish it in shared memory:
// written by its owner, read in place by everyone else. Lookups are one hash
// probe, so a reader can afford several per packet against tables of
// hundreds of thousands of entries.
//
// A shared-memory lookup may find that the entry it lands on is corrupt;
// it then throws CorruptionDetectedException. Readers have two ways in:
//
//   lookup(key)  the raw read: the entry, null when absent, and the throw on
//                corruption, for the rare reader that must tell the two
//                apart;
//   find(key)    what readers use: catches the exception, hands its message
//                to the table's corruption handler and reads as absent;
//   get(key)     find(), reading an absent key as the table's empty value
//                (a default V), for readers that treat both alike.
//
// Corruption is what the memory says, not something a reader can cause, so
// in this in-process model a writer (a test) marks keys corrupt with
// corruptIs(); the mark stays until corruptDel() or delAll(), whether or
// not the key holds an entry.
//
// Entries keep their address until they are removed or replaced, so a
// pointer from find() stays valid while the reader works on one packet.
// K needs a std::hash (or Hash), equality and a text form, which names the
// key in the corruption message.
template <class K, class V, class Hash = std::hash<K>> class ShmTable {
public:
  using Map = std::unordered_map<K, V, Hash>;
  using const_iterator = typename Map::const_iterator;

  explicit ShmTable(std::string name) : name_(std::move(name)) {}

  // Names the table in corruption messages ("transitLfib/route").
  const std::string &name() const { return name_; }

  // The entry under `key`, or null when there is none. Throws
  // CorruptionDetectedException when the key's entry is corrupt.
  const V *lookup(const K &key) const {
    if (!corrupt_.empty() && corrupt_.contains(key)) {
      throw CorruptionDetectedException(corruptionMessage(key));
    }
    const auto it = map_.find(key);
    return it == map_.end() ? nullptr : &it->second;
  }

  // The entry under `key`, or null when there is none or it is corrupt; a
  // corrupt entry first runs the corruption handler with the message.
  const V *find(const K &key) const {
    try {
      return lookup(key);
    } catch (const CorruptionDetectedException &e) {
      corruptionHandler_(e.what());
      return nullptr;
    }
  }

  // As find(), with emptyValue() for a key that reads as absent.
  const V &get(const K &key) const {
    const V *value = find(key);
    return value ? *value : empty_;
  }
  const V &operator[](const K &key) const { return get(key); }

  const V &emptyValue() const { return empty_; }

  std::size_t size() const { return map_.size(); }
  bool empty() const { return map_.empty(); }
  // Every entry, in no particular order, corrupt ones included: for
  // writers, dumps and tests, not for the forwarding path.
  const_iterator begin() const { return map_.begin(); }
  const_iterator end() const { return map_.end(); }

  // Writing, for the table's owner and tests.
  void is(const K &key, const V &value) { map_.insert_or_assign(key, value); }
  void del(const K &key) { map_.erase(key); }
  // Removes every entry and every corruption mark.
  void delAll() {
    map_.clear();
    corrupt_.clear();
  }

  // Marks `key` corrupt: lookup() throws for it from now on.
  void corruptIs(const K &key) { corrupt_.insert(key); }
  void corruptDel(const K &key) { corrupt_.erase(key); }
  bool corrupt(const K &key) const { return corrupt_.contains(key); }

  const CorruptionHandler &corruptionHandler() const {
    return corruptionHandler_;
  }
  // An empty handler restores the default, traceCorruption.
  void corruptionHandlerIs(CorruptionHandler handler) {
    corruptionHandler_ = handler ? std::move(handler) : traceCorruption;
  }

private:
  std::string corruptionMessage(const K &key) const {
    return "corruption detected in table " + name_ + " at key " +
           Orv::valueText(key);
  }

  std::string name_;
  Map map_;
  std::unordered_set<K, Hash> corrupt_;
  CorruptionHandler corruptionHandler_ = traceCorruption;
  V empty_{};
};

} // namespace Ruvo
