#pragma once
// One WLAN client handle as the port hands it to the library: the handle
// wlanapi opened, the entry table it came from (kept loaded while the
// client lives), and the library's notification callback, which wlanapi
// reaches through a trampoline with this client as its context.
//
// wlanapi may call the trampoline until WlanCloseHandle returns, so a
// client with a registration keeps itself alive until it is closed, even
// past the backend that made it, and the module stays loaded from the
// first registration on. A client dropped without Close leaves its handle
// to the process's end: closing waits for callbacks in flight, which must
// never happen under the loader lock.

// clang-format off
#include <windows.h>
#include <wlanapi.h>
// clang-format on

#include <memory>
#include <mutex>

#include "platform/ports/Wlan.h"
#include "platform/windows/wlan/WlanEntries.h"

namespace connectkit::win {

class WlanClient final : public std::enable_shared_from_this<WlanClient> {
public:
    WlanClient(std::shared_ptr<const WlanEntries> entries, HANDLE handle)
        : entries_(std::move(entries)), handle_(handle) {}

    const WlanEntries& entries() const { return *entries_; }
    HANDLE handle() const { return handle_; }

    uint32_t Register(uint32_t sources, bool ignoreDuplicate,
                      platform::WlanNotificationCallback callback, void* context,
                      uint32_t* previousSources);
    // WlanCloseHandle: returns once callbacks in flight are over.
    uint32_t Close();

private:
    static VOID WINAPI Deliver(PWLAN_NOTIFICATION_DATA data, PVOID context);

    const std::shared_ptr<const WlanEntries> entries_;
    const HANDLE handle_;
    std::mutex mutex_;
    platform::WlanNotificationCallback callback_ = nullptr;
    void* context_ = nullptr;
    std::shared_ptr<WlanClient> self_;
};

// What wlanapi allocated, freed with WlanFreeMemory.
template <typename T>
class WlanMemory {
public:
    explicit WlanMemory(const WlanEntries& entries) : entries_(entries) {}
    ~WlanMemory() {
        if (pointer_) {
            entries_.freeMemory(pointer_);
        }
    }
    WlanMemory(const WlanMemory&) = delete;
    WlanMemory& operator=(const WlanMemory&) = delete;

    T** Put() { return &pointer_; }
    T* Get() const { return pointer_; }

private:
    const WlanEntries& entries_;
    T* pointer_ = nullptr;
};

}  // namespace connectkit::win
