#pragma once
// The handlers that one wrapper registered for one runtime event, by the
// runtime's token. A removed handler stays silent even if the runtime calls
// its delegate once more (a call already on its way, or a late runtime):
// every delegate checks its entry's flag before calling. Whatever is still
// registered when the wrapper goes is removed from the runtime object then,
// so no delegate of ours outlives its wrapper inside the runtime.

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win {

template <typename Handler>
class Subscriptions {
public:
    struct Entry {
        explicit Entry(Handler callback) : handler(std::move(callback)) {}
        std::atomic<bool> active{true};
        Handler handler;
    };

    std::shared_ptr<Entry> Prepare(Handler handler) {
        return std::make_shared<Entry>(std::move(handler));
    }

    void Added(abi::Token token, std::shared_ptr<Entry> entry) {
        std::lock_guard<std::mutex> lock(mutex_);
        entries_[token] = std::move(entry);
    }

    // Silences `token`'s handler. False when this wrapper never added it.
    bool Remove(abi::Token token) {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = entries_.find(token);
        if (found == entries_.end()) {
            return false;
        }
        found->second->active = false;
        entries_.erase(found);
        return true;
    }

    // Silences every handler and takes each off the runtime object with
    // `remove` (its remove_ method); a refusal is logged, naming `call`.
    template <typename Remove>
    void RemoveAll(const Remove& remove, const char* call) {
        std::vector<abi::Token> tokens;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            for (auto& [token, entry] : entries_) {
                entry->active = false;
                tokens.push_back(token);
            }
            entries_.clear();
        }
        for (auto token : tokens) {
            HRESULT result = remove(token);
            if (FAILED(result)) {
                LogErrorFun("[WinRT] %s for a dropped wrapper failed, hresult 0x%08lx", call,
                            static_cast<unsigned long>(result));
            }
        }
    }

private:
    std::mutex mutex_;
    std::map<abi::Token, std::shared_ptr<Entry>> entries_;
};

}  // namespace connectkit::win
