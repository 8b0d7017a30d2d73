#include "bluetooth/RealtekBtLibrary.h"

#include <memory>
#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"
#include "foundation/FunctionName.h"
#include "platform/Platform.h"

namespace connectkit::bluetooth::realtek {

namespace rtk = platform::rtk;

namespace {

struct Library {
    std::unique_ptr<platform::Mutex> mutex = platform::Current().clock().NewMutex(true, 0);
    std::unique_ptr<platform::LoadedLibrary> module;
    rtk::Device device = rtk::InvalidDevice();
};

// Never deleted: see the header on why the library stays loaded.
Library& State() {
    static auto* library = new Library();
    return *library;
}

template <typename Function>
Function Entry(Library& library, const char* name) {
    if (!library.module) {
        return nullptr;
    }
    return reinterpret_cast<Function>(library.module->FindSymbol(name));
}

// Calls `call`, again while it answers busy.
template <typename Call>
int RepeatWhileBusy(const Call& call) {
    int result = call();
    for (int repeat = 0; result == rtk::kRtkBusy && repeat < kBusyRepeats; ++repeat) {
        platform::Current().clock().Sleep(kBusyPauseMs);
        result = call();
    }
    return result;
}

// Calls `call` with the open handle, again while it answers busy.
template <typename Function, typename Call>
int WithDevice(const char* name, const Call& call) {
    auto& library = State();
    std::lock_guard<platform::Mutex> guard(*library.mutex);
    auto function = Entry<Function>(library, name);
    if (!function) {
        return kMissingEntry;
    }
    return RepeatWhileBusy([&] { return call(function, library.device); });
}

}  // namespace

rtk::Device Open() {
    auto& library = State();
    std::lock_guard<platform::Mutex> guard(*library.mutex);
    if (library.device != rtk::InvalidDevice()) {
        return library.device;
    }
    if (!library.module) {
        uint32_t error = 0;
        library.module = platform::Current().loader().Load(rtk::kLibraryName, error);
        if (!library.module) {
            LogErrorFun("%s RealtekBTVeltra.dll not loaded, error %u", CK_FUNCTION, error);
            return library.device;
        }
    }
    if (auto open = Entry<rtk::OpenDeviceFn>(library, rtk::kOpenDevice)) {
        rtk::Device device = rtk::InvalidDevice();
        RepeatWhileBusy([&] {
            device = rtk::InvalidDevice();
            return open(&device);
        });
        library.device = device;
    }
    return library.device;
}

void Close() {
    auto& library = State();
    std::lock_guard<platform::Mutex> guard(*library.mutex);
    if (library.device == rtk::InvalidDevice()) {
        return;
    }
    if (auto close = Entry<rtk::CloseDeviceFn>(library, rtk::kCloseDevice)) {
        RepeatWhileBusy([&] { return close(library.device); });
    }
    library.device = rtk::InvalidDevice();
}

int SetParameters(const rtk::MultiAdvParam& parameters) {
    return WithDevice<rtk::SetMultiAdvParamFn>(
        rtk::kSetMultiAdvParam,
        [&](auto function, rtk::Device device) { return function(device, &parameters); });
}

int SendAdv(uint8_t instance, const uint8_t* data, uint8_t length, const uint8_t* response,
            uint8_t responseLength) {
    return WithDevice<rtk::SendAdvFn>(rtk::kSendAdv, [&](auto function, rtk::Device device) {
        return function(instance, data, length, response, responseLength, device);
    });
}

int CloseAdv(uint8_t instance) {
    return WithDevice<rtk::CloseAdvFn>(rtk::kCloseAdv, [&](auto function, rtk::Device device) {
        return function(instance, device);
    });
}

}  // namespace connectkit::bluetooth::realtek
