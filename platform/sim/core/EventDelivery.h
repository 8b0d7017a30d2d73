#pragma once
// Event deliveries of the simulated runtime objects. A model prepares them
// under its own mutex and runs them once that mutex is released, on one of
// the clock's dispatcher threads, as the OS raises its events on threads of
// its own.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/sim/core/HandlerTable.h"
#include "platform/sim/core/VirtualClock.h"

namespace connectkit::sim {

using Events = std::vector<std::function<void()>>;

// Runs each delivery in turn on the calling (dispatcher) thread.
inline void Run(const Events& events) {
    for (const auto& event : events) {
        event();
    }
}

// Hands deliveries prepared on a caller's thread to a dispatcher thread.
inline void PostEvents(VirtualClock& clock, Events events) {
    if (!events.empty()) {
        clock.Post(0, [events = std::move(events)] { Run(events); });
    }
}

// A delivery to the handlers of record `id` in `table` that were registered
// when the event happened (needs the world's mutex). Each handler is looked
// up again, under the mutex, right before its call, so a handler removed
// meanwhile (even by an earlier handler of the same event) is not called.
template <class World, class Record, class Handler, class Call>
std::function<void()> Delivery(World& world, std::map<uint64_t, Record> World::*table,
                               HandlerTable<Handler> Record::*handlers, uint64_t id, Call call) {
    auto tokens = ((world.*table).at(id).*handlers).Tokens();
    return [weak = world.weak_from_this(), table, handlers, id, tokens = std::move(tokens), call] {
        auto shared = weak.lock();
        if (!shared) {
            return;
        }
        for (auto token : tokens) {
            typename HandlerTable<Handler>::Entry handler;
            {
                std::lock_guard<std::mutex> lock(shared->mutex);
                auto& records = (*shared).*table;
                auto found = records.find(id);
                if (found != records.end()) {
                    handler = (found->second.*handlers).Find(token);
                }
            }
            if (handler) {
                call(*handler);
            }
        }
    };
}

}  // namespace connectkit::sim
