#pragma once
// Dynamic libraries: LoadLibraryW and GetProcAddress by name or ordinal.
// Vendor driver libraries are always loaded at run time, never linked, so the
// library works on PCs that do not have them.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace connectkit::platform {

// An entry point; cast to the real function type before calling.
using ProcAddress = void (*)();

class LoadedLibrary {
public:
    // Unloads the library.
    virtual ~LoadedLibrary() = default;
    // Null when the library has no such export.
    virtual ProcAddress FindSymbol(const std::string& name) = 0;
    virtual ProcAddress FindOrdinal(uint16_t ordinal) = 0;
};

class Loader {
public:
    virtual ~Loader() = default;
    // A bare file name is searched for the way LoadLibraryW searches; a path
    // is taken as it is. Null with a Win32 error code on failure.
    virtual std::unique_ptr<LoadedLibrary> Load(const std::wstring& nameOrPath,
                                                uint32_t& error) = 0;
    // Frees memory that a vendor library allocated for its caller (with
    // LocalAlloc on Windows).
    virtual void FreeVendorBuffer(void* buffer) = 0;
    // How many bytes such memory holds (LocalSize on Windows); 0 for memory
    // that no vendor library handed out.
    virtual size_t VendorBufferSize(const void* buffer) = 0;
};

}  // namespace connectkit::platform
