#pragma once
#include <map>
#include <optional>
#include <utility>

#include "foundation/CriticalSection.h"
#include "foundation/Lock.h"

namespace vorlek {

/// An ordered map under a lock of its own. Values leave by copy, so that none is looked at unguarded.
template <class Key, class Value>
class ThreadSafeMap {
public:
    ThreadSafeMap() = default;
    ThreadSafeMap(const ThreadSafeMap&) = delete;
    ThreadSafeMap& operator=(const ThreadSafeMap&) = delete;
    virtual ~ThreadSafeMap() = default;

    /// The value of the key, nothing if the map lacks it.
    std::optional<Value> Find(const Key& key) const {
        const Lock guard(lock_);
        const auto found = map_.find(key);
        return found == map_.end() ? std::nullopt : std::optional<Value>(found->second);
    }

    /// Returns whether the key was new. One that is there already keeps its value.
    bool Insert(const Key& key, Value value) {
        const Lock guard(lock_);
        return map_.emplace(key, std::move(value)).second;
    }

    /// Returns whether the key was there.
    bool Erase(const Key& key) {
        const Lock guard(lock_);
        return map_.erase(key) != 0;
    }

    void Clear() {
        const Lock guard(lock_);
        map_.clear();
    }

private:
    std::map<Key, Value> map_;
    mutable CriticalSection lock_;
};

} // namespace vorlek
