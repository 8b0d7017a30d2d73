#pragma once
// Ownership of Win32 handles: one owner closes each handle exactly once,
// with the closer of its kind (a type: the address of a function imported
// from a DLL is no constant a template can take). A closer may carry state,
// such as a closing function resolved at run time; an empty one costs
// nothing. A kind whose "no handle" is
// INVALID_HANDLE_VALUE (device information sets, files) says so; the others
// use null. Kinds that need a header of their own (SetupAPI, wlanapi)
// declare their alias where they are used.

#include <windows.h>

#include <utility>

namespace connectkit::win {

enum class NoHandle { Null, InvalidHandleValue };

template <typename Handle, typename Closer, NoHandle kNone = NoHandle::Null>
class UniqueHandle {
public:
    UniqueHandle() = default;
    explicit UniqueHandle(Handle handle, Closer closer = Closer{})
        : handle_(handle), closer_(std::move(closer)) {}
    ~UniqueHandle() { Reset(); }
    UniqueHandle(UniqueHandle&& other) noexcept
        : handle_(other.Release()), closer_(std::move(other.closer_)) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        Reset(other.Release());
        closer_ = std::move(other.closer_);
        return *this;
    }

    Handle Get() const { return handle_; }
    explicit operator bool() const { return handle_ != None(); }
    // For a call that hands back a new handle: closes what this held first.
    Handle* Put() {
        Reset();
        return &handle_;
    }
    Handle Release() { return std::exchange(handle_, None()); }
    void Reset(Handle handle = None()) {
        if (Handle old = std::exchange(handle_, handle); old != None()) {
            closer_(old);
        }
    }

private:
    static Handle None() {
        if constexpr (kNone == NoHandle::Null) {
            return nullptr;
        } else {
            return static_cast<Handle>(INVALID_HANDLE_VALUE);
        }
    }

    Handle handle_ = None();
    [[no_unique_address]] Closer closer_;
};

struct CloseKernelObject {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
struct CloseRegistryKey {
    void operator()(HKEY key) const { RegCloseKey(key); }
};
struct FreeModule {
    void operator()(HMODULE module) const { FreeLibrary(module); }
};

// Processes, threads, semaphores, events.
using KernelHandle = UniqueHandle<HANDLE, CloseKernelObject>;
using RegistryKey = UniqueHandle<HKEY, CloseRegistryKey>;
using LoadedModule = UniqueHandle<HMODULE, FreeModule>;

}  // namespace connectkit::win
