#pragma once
// A system library reached at run time (LoadLibraryExW and GetProcAddress)
// rather than imported: connectkit.dll must load on a PC whose system lacks
// the library, and tests point the same code at a double of it in the same
// process that also runs it against Wine's own.
//
// Where the library is looked for is LoadLibraryExW's search flags: the
// system folder only by default, so that a copy planted beside the host is
// never loaded; a test names its double with 0, the ordinary search order,
// which reaches the test executable's folder. The caller says so rather than
// the name deciding, which would need a list of the system's own names here.

#include <windows.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {

struct LibrarySource {
    std::wstring name;
    DWORD searchFlags = LOAD_LIBRARY_SEARCH_SYSTEM32;
};

// Loads libraries and resolves their entries for one table. A failure is
// logged under `tag` (such as "[WLAN]") and its Win32 error kept in `error`.
class SystemLibraryLoader {
public:
    SystemLibraryLoader(const wchar_t* tag, uint32_t& error) : tag_(tag), error_(error) {}

    bool Load(const std::wstring& name, DWORD searchFlags, LoadedModule& module) const;

    template <typename Function>
    bool Resolve(HMODULE module, const char* name, Function& function) const {
        // GetProcAddress answers one generic function type; the entry's own
        // type is the one the system's header declares.
        function = reinterpret_cast<Function>(Find(module, name));
        return function != nullptr;
    }

private:
    void* Find(HMODULE module, const char* name) const;

    const wchar_t* tag_;
    uint32_t& error_;
};

// A table of entries loaded on first use and kept while the backend lives.
// A failed load is not tried again: its Win32 error answers every later call,
// so a PC without the library logs the failure once, not on every poll.
template <typename Entries>
class EntriesOnce {
public:
    using Load = std::shared_ptr<const Entries> (*)(const LibrarySource&, uint32_t&);

    EntriesOnce(LibrarySource library, Load load) : library_(std::move(library)), load_(load) {}

    // The table, or null with the load's error in `error`.
    std::shared_ptr<const Entries> Get(uint32_t& error) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!entries_ && error_ == 0) {
            entries_ = load_(library_, error_);
        }
        error = error_;
        return entries_;
    }

private:
    const LibrarySource library_;
    const Load load_;
    std::mutex mutex_;
    std::shared_ptr<const Entries> entries_;
    uint32_t error_ = 0;
};

}  // namespace connectkit::win
