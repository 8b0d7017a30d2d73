#include "platform/windows/core/SystemLibrary.h"

#include "SDK/Util/LogTool/LogTool.h"

namespace connectkit::win {

bool SystemLibraryLoader::Load(const std::wstring& name, DWORD searchFlags,
                               LoadedModule& module) const {
    module.Reset(LoadLibraryExW(name.c_str(), nullptr, searchFlags));
    if (!module) {
        error_ = GetLastError();
        LogErrorFun(L"%ls loading %ls failed, error %lu", tag_, name.c_str(),
                    static_cast<unsigned long>(error_));
        return false;
    }
    return true;
}

void* SystemLibraryLoader::Find(HMODULE module, const char* name) const {
    void* entry = reinterpret_cast<void*>(GetProcAddress(module, name));
    if (!entry) {
        error_ = GetLastError();
        LogErrorFun("%ls entry %s not found, error %lu", tag_, name,
                    static_cast<unsigned long>(error_));
    }
    return entry;
}

}  // namespace connectkit::win
