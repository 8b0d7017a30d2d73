#pragma once
// Event handlers of one simulated runtime object, by token. Entries are
// shared so that a delivery can hold a handler after the table's lock is
// gone; whoever takes an entry out lets it go only once that lock is
// released, since a handler may capture the object whose destructor takes it.

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "platform/ports/Errors.h"
#include "platform/ports/RuntimeTypes.h"

namespace connectkit::sim {

// The runtime refuses a null handler with E_INVALIDARG.
template <class Handler>
void RequireHandler(const Handler& handler) {
    if (!handler) {
        throw platform::PlatformError(static_cast<int32_t>(0x80070057u), "null event handler");
    }
}

template <class Handler>
class HandlerTable {
public:
    using Entry = std::shared_ptr<const Handler>;

    void Add(platform::EventToken token, Handler handler) {
        handlers_.emplace(token, std::make_shared<const Handler>(std::move(handler)));
    }
    // The caller lets the result go once the mutex is released.
    Entry Take(platform::EventToken token) {
        auto found = handlers_.find(token);
        if (found == handlers_.end()) {
            return nullptr;
        }
        Entry taken = std::move(found->second);
        handlers_.erase(found);
        return taken;
    }
    Entry Find(platform::EventToken token) const {
        auto found = handlers_.find(token);
        return found == handlers_.end() ? nullptr : found->second;
    }
    std::vector<platform::EventToken> Tokens() const {
        std::vector<platform::EventToken> tokens;
        for (const auto& [token, handler] : handlers_) {
            tokens.push_back(token);
        }
        return tokens;
    }
    size_t Size() const { return handlers_.size(); }
    std::map<platform::EventToken, Entry> TakeAll() { return std::exchange(handlers_, {}); }

private:
    std::map<platform::EventToken, Entry> handlers_;
};

}  // namespace connectkit::sim
