#pragma once
// A test double's DLL, held loaded for the object's life so that the code
// under test gets the same module and the setup made here, and the entry
// every double exports beyond the real interface: it applies a setup when
// given, then fills a report when given, and answers 0 unless the setup is
// one the double cannot represent.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::test {

template <class SetupT, class ReportT>
class DoubleControl {
public:
    DoubleControl(const std::wstring& path, const char* entry)
        : module_(LoadLibraryW(path.c_str())) {
        if (module_) {
            // Through the generic function type: FARPROC's own signature is
            // not the export's.
            control_ = reinterpret_cast<Control>(
                reinterpret_cast<void (*)()>(GetProcAddress(module_.Get(), entry)));
        }
    }

    bool Ready() const { return control_ != nullptr; }
    HMODULE Module() const { return module_.Get(); }
    void Configure(const SetupT& setup) { ASSERT_EQ(control_(&setup, nullptr), 0); }
    ReportT Report() {
        ReportT report{};
        control_(nullptr, &report);
        return report;
    }

private:
    using Control = int (*)(const SetupT*, ReportT*);
    win::LoadedModule module_;
    Control control_ = nullptr;
};

}  // namespace connectkit::test
