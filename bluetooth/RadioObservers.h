#pragma once
// The observer lists of the radio objects: changed under a small lock of
// their own and delivered over a copy, without the object's lock, so an
// observer may unregister during delivery and the platform's thread never
// waits for a caller that holds the object's lock across a radio listing.

#include <algorithm>
#include <mutex>
#include <vector>

#include "foundation/Guarded.h"
#include "platform/ports/Sync.h"

namespace connectkit::bluetooth {

template <typename Observer>
void AddObserver(platform::Mutex& mutex, std::vector<Observer*>& observers, Observer* observer) {
    std::lock_guard<platform::Mutex> guard(mutex);
    observers.push_back(observer);
}

// Adds `observer` unless it is null or already listed: false then.
template <typename Observer>
bool AddObserverOnce(platform::Mutex& mutex, std::vector<Observer*>& observers,
                     Observer* observer) {
    std::lock_guard<platform::Mutex> guard(mutex);
    if (!observer || std::find(observers.begin(), observers.end(), observer) != observers.end()) {
        return false;
    }
    observers.push_back(observer);
    return true;
}

// Removes the first entry equal to `observer`, if any.
template <typename Observer>
void RemoveObserver(platform::Mutex& mutex, std::vector<Observer*>& observers, Observer* observer) {
    std::lock_guard<platform::Mutex> guard(mutex);
    auto found = std::find(observers.begin(), observers.end(), observer);
    if (found != observers.end()) {
        observers.erase(found);
    }
}

// Calls `call` on every non-null entry of a copy of the list. What one
// observer throws is logged under `name` and the others still hear.
template <typename Observer, typename Call>
void DeliverToObservers(platform::Mutex& mutex, const std::vector<Observer*>& observers,
                        const char* name, const Call& call) {
    std::unique_lock<platform::Mutex> guard(mutex);
    auto copy = observers;
    guard.unlock();
    for (auto* observer : copy) {
        if (observer) {
            Guarded(name, [&call, observer] { call(*observer); });
        }
    }
}

}  // namespace connectkit::bluetooth
