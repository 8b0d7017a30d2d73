#pragma once
// Whether this thread runs one of the library's Native Wi-Fi notification
// callbacks. wlanapi's CloseHandle waits for the client's callbacks in flight,
// whichever handle they came for, so a close asked for on such a thread (a
// listener or an observer that stops the monitor) must be left to another.

namespace connectkit::wifi {

class WlanCallbackScope {
public:
    WlanCallbackScope() { ++depth_; }
    ~WlanCallbackScope() { --depth_; }
    WlanCallbackScope(const WlanCallbackScope&) = delete;
    WlanCallbackScope& operator=(const WlanCallbackScope&) = delete;

    static bool Active() { return depth_ > 0; }

private:
    static inline thread_local int depth_ = 0;
};

}  // namespace connectkit::wifi
