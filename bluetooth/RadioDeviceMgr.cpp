#include "bluetooth/RadioDeviceMgr.h"

#include <atomic>
#include <optional>

#include "SDK/Util/LogTool/LogTool.h"
#include "foundation/FunctionName.h"
#include "platform/ModuleLifetime.h"
#include "platform/Platform.h"

using connectkit::platform::AsyncStatus;
using connectkit::platform::RadioList;
using connectkit::platform::WaitResult;

namespace {

constexpr uint32_t kListingWaitMs = 3000;
constexpr int kNotListed = 0;
constexpr int kListed = 2;
constexpr int kListingFailed = 3;
// WAIT_TIMEOUT and WAIT_FAILED, as the wait's result is logged.
constexpr unsigned long kWaitTimeout = 0x102;
constexpr unsigned long kWaitFailed = 0xFFFFFFFF;

}  // namespace

std::shared_ptr<connectkit::platform::Radio> RadioHolder::Get() const {
    std::lock_guard<std::mutex> guard(mutex_);
    return radio_;
}

void RadioHolder::Set(std::shared_ptr<connectkit::platform::Radio> radio) {
    std::lock_guard<std::mutex> guard(mutex_);
    radio_ = std::move(radio);
}

// The handler runs on a platform thread while the thread that started the
// listing holds the manager's mutex and waits: it takes only this block's
// own lock, which no one holds across a call.
struct RadioDeviceMgr::Listing {
    std::mutex mutex;
    std::optional<RadioList> radios;
    int state = kNotListed;
    // Created before the first listing starts and never replaced, so every
    // handler sees it.
    std::unique_ptr<connectkit::platform::Event> event;
    std::atomic<bool> alive{true};

    void Complete(AsyncStatus status, RadioList list) {
        if (!alive) {
            event->Set();
            return;
        }
        switch (status) {
            case AsyncStatus::Completed: {
                std::lock_guard<std::mutex> guard(mutex);
                radios = std::move(list);
                state = kListed;
                break;
            }
            case AsyncStatus::Canceled: {
                std::lock_guard<std::mutex> guard(mutex);
                state = kListingFailed;
                break;
            }
            case AsyncStatus::Error: {
                LogErrorFun("get status error");
                std::lock_guard<std::mutex> guard(mutex);
                state = kListingFailed;
                break;
            }
            default:
                return;
        }
        event->Set();
    }

    // Whether the list is known and holds at least two radios.
    bool Settled() {
        std::lock_guard<std::mutex> guard(mutex);
        return state == kListed && radios && radios->size() >= 2;
    }

    std::optional<RadioList> Radios() {
        std::lock_guard<std::mutex> guard(mutex);
        return radios;
    }
};

RadioDeviceMgr* RadioDeviceMgr::GetInstance() {
    static RadioDeviceMgr instance;
    return &instance;
}

RadioDeviceMgr::RadioDeviceMgr()
    : listing_(std::make_shared<Listing>()),
      mutex_(connectkit::platform::Current().clock().NewMutex(true, 0)) {
    LogWarnFun("radios == NULL");
}

RadioDeviceMgr::~RadioDeviceMgr() {
    listing_->alive = false;
}

void RadioDeviceMgr::ListAndWait() {
    std::lock_guard<connectkit::platform::Mutex> guard(*mutex_);
    if (!listing_->alive || listing_->Settled()) {
        return;
    }
    if (!listing_->event) {
        listing_->event = connectkit::platform::Current().clock().NewEvent(false, false);
        if (!listing_->event) {
            LogErrorFun("wait for result failed,errCode:%lu", kWaitFailed);
            return;
        }
    }
    // A listing that outlasted an earlier wait set the event when it ended;
    // left set, this wait would return before its own listing does.
    listing_->event->Reset();
    // The handler may run after the host unloaded us; the module stays.
    connectkit::platform::KeepModuleLoaded();
    auto listing = listing_;
    connectkit::platform::Current().radios().GetRadiosAsync(
        [listing](AsyncStatus status, RadioList radios) {
            listing->Complete(status, std::move(radios));
        });
    auto waited = listing_->event->Wait(kListingWaitMs);
    if (waited != WaitResult::Signaled) {
        LogErrorFun("wait for result failed,errCode:%lu",
                    waited == WaitResult::TimedOut ? kWaitTimeout : kWaitFailed);
    }
}

void RadioDeviceMgr::LoadRadios() {
    const char* function = CK_FUNCTION;
    try {
        ListAndWait();
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
    }
}

bool RadioDeviceMgr::FindRadio(connectkit::platform::RadioKind kind, RadioHolder* radio) {
    const char* function = CK_FUNCTION;
    try {
        std::lock_guard<connectkit::platform::Mutex> guard(*mutex_);
        if (!radio) {
            return false;
        }
        if (listing_->Radios()) {
            LogWarnFun("radios is not NULL");
        } else {
            LogErrorFun("radios == NULL");
        }
        if (!listing_->Settled()) {
            ListAndWait();
        }
        auto radios = listing_->Radios();
        if (!radios) {
            LogErrorFun("after LoadRadios, radios == NULL");
            return false;
        }
        for (size_t i = 0; i < radios->size(); ++i) {
            const auto& candidate = (*radios)[i];
            if (!candidate) {
                LogWarnFun("%s radio %zu of the list is null", function, i);
                continue;
            }
            if (candidate->Kind() == kind) {
                radio->Set(candidate);
                LogErrorFun("radio is set value");
                return true;
            }
        }
        LogWarnFun("radio is not set value");
        return false;
    } catch (...) {
        LogErrorFun("FindRadio In Catch");
        return false;
    }
}
