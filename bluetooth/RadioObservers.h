#pragma once
// The observer lists of the radio objects and of the Bluetooth LE front and
// scanner: changed under a small lock of their own and delivered over a
// snapshot without it, so an observer may register or unregister during
// delivery and the platform's thread never waits for a caller that holds
// its owner's lock across a radio listing.
//
// When Remove returns, no delivery to the removed entry is under way on
// another thread and none will start, so the caller may destroy the
// observer at once (VendorMultiAdv does, from BLEAdvertiser::unInit, while
// radio changes arrive on platform threads). Each entry has a DeliveryGate
// that its deliveries pass; Remove closes it and waits for those inside,
// through the clock port and for at most kDeliveryWaitMs; one that outlasts
// that is logged and the wait gives up.
//
// Removing an observer from inside a delivery to that same observer on the
// same thread does not wait: it would wait for itself. Deliveries to it
// under way on other threads at that moment are then the caller's concern.
// Owners let go of their own lock before Remove waits, so an observer that
// calls back into its owner does not hold up its own unregistration.
//
// Delivery costs one lock round to copy the snapshot pointer and, per
// entry, two atomic counts and a thread-local mark; it never holds the
// list's lock while it calls an observer.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "bluetooth/DeliveryGate.h"
#include "foundation/Guarded.h"
#include "platform/Platform.h"
#include "platform/ports/Sync.h"

namespace connectkit::bluetooth {

inline constexpr uint32_t kDeliveryWaitMs = 5000;

// Marks this thread as delivering to one observer of one list for the
// mark's life; marks nest when a delivery causes another on the same thread.
class DeliveringTo {
public:
    DeliveringTo(const void* list, const void* observer)
        : list_(list), observer_(observer), outer_(innermost_) {
        innermost_ = this;
    }
    ~DeliveringTo() { innermost_ = outer_; }
    DeliveringTo(const DeliveringTo&) = delete;
    DeliveringTo& operator=(const DeliveringTo&) = delete;

    static bool OnThisThread(const void* list, const void* observer) {
        for (const auto* mark = innermost_; mark; mark = mark->outer_) {
            if (mark->list_ == list && mark->observer_ == observer) {
                return true;
            }
        }
        return false;
    }

private:
    const void* list_;
    const void* observer_;
    const DeliveringTo* outer_;
    static inline thread_local const DeliveringTo* innermost_ = nullptr;
};

template <typename Observer>
class ObserverList {
public:
    ObserverList()
        : mutex_(platform::Current().clock().NewMutex(false, 0)),
          slots_(std::make_shared<const Slots>()) {}

    // Adds an entry for `observer`, once more if it is already listed; a
    // null observer is not listed.
    void Add(Observer* observer) { Insert(observer, false); }

    // Adds `observer` unless it is null or already listed: false then.
    bool AddOnce(Observer* observer) { return Insert(observer, true); }

    // Removes the first entry equal to `observer`, if any, and waits for its
    // deliveries under way (see above); `owner` names the log line.
    void Remove(Observer* observer, const char* owner) {
        std::shared_ptr<Slot> removed;
        {
            std::lock_guard<platform::Mutex> guard(*mutex_);
            auto found = std::find_if(slots_->begin(), slots_->end(), [observer](const auto& slot) {
                return slot->observer == observer;
            });
            if (found == slots_->end()) {
                return;
            }
            removed = *found;
            auto rest = std::make_shared<Slots>(slots_->begin(), found);
            rest->insert(rest->end(), found + 1, slots_->end());
            slots_ = std::move(rest);
        }
        if (DeliveringTo::OnThisThread(this, observer)) {
            removed->gate.Shut();
            return;
        }
        removed->gate.Close(owner, kDeliveryWaitMs, "a delivery to an observer");
    }

    // Calls `call` on every entry listed when delivery began and not removed
    // since. What one observer throws is logged under `name` and the others
    // still hear.
    template <typename Call>
    void Deliver(const char* name, const Call& call) const {
        std::shared_ptr<const Slots> slots;
        {
            std::lock_guard<platform::Mutex> guard(*mutex_);
            slots = slots_;
        }
        for (const auto& slot : *slots) {
            Observer* observer = slot->observer;
            slot->gate.Pass([&] {
                DeliveringTo mark(this, observer);
                Guarded(name, [&] { call(*observer); });
            });
        }
    }

private:
    struct Slot {
        explicit Slot(Observer* listed) : observer(listed) {}
        Observer* const observer;
        DeliveryGate gate;
    };
    using Slots = std::vector<std::shared_ptr<Slot>>;

    bool Insert(Observer* observer, bool once) {
        if (!observer) {
            return false;
        }
        auto slot = std::make_shared<Slot>(observer);
        std::lock_guard<platform::Mutex> guard(*mutex_);
        if (once && std::any_of(slots_->begin(), slots_->end(), [observer](const auto& listed) {
                return listed->observer == observer;
            })) {
            return false;
        }
        auto grown = std::make_shared<Slots>(*slots_);
        grown->push_back(std::move(slot));
        slots_ = std::move(grown);
        return true;
    }

    std::unique_ptr<platform::Mutex> mutex_;
    std::shared_ptr<const Slots> slots_;
};

}  // namespace connectkit::bluetooth
