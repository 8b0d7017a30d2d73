// A host that loads connectkit.dll at run time, as a suite module does, uses
// one capability, unloads it and goes on. One process per case, named on the
// command line. FreeLibrary runs on a thread of its own and is given one
// second: a hang fails the case instead of stalling the run. Any failure ends
// the process at once with exit code 1 (TerminateProcess needs no loader
// lock, which a hung unload may hold).
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "connectkit/ErrorStatus.h"
#include "connectkit/SoftAPManager.h"
#include "connectkit/WifiDriverTypes.h"

namespace {

constexpr DWORD kUnloadLimitMs = 1000;
constexpr DWORD kDeliveryLimitMs = 5000;

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "FAIL: %s (error %lu)\n", what, GetLastError());
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 1);
    ExitProcess(1);
}

void Check(bool condition, const char* what) {
    if (!condition) {
        Fail(what);
    }
}

class Listener;

class Library {
public:
    Library() : module_(LoadLibraryW(L"connectkit.dll")) {
        Check(module_ != nullptr, "LoadLibraryW");
    }

    template <class Function>
    Function Get(const char* name) {
        auto address = GetProcAddress(module_, name);
        Check(address != nullptr, name);
        return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(address));
    }

    // Unloads within the limit. `stillLoaded`: whether a thread of the
    // library is still at work, so that the module must have kept itself
    // loaded; otherwise it must really be gone.
    void Unload(bool stillLoaded) {
        HANDLE thread = CreateThread(
            nullptr, 0,
            [](void* module) -> DWORD { return FreeLibrary(static_cast<HMODULE>(module)) ? 0 : 1; },
            module_, 0, nullptr);
        Check(thread != nullptr, "CreateThread");
        Check(WaitForSingleObject(thread, kUnloadLimitMs) == WAIT_OBJECT_0,
              "FreeLibrary did not return within one second");
        DWORD result = 1;
        GetExitCodeThread(thread, &result);
        CloseHandle(thread);
        Check(result == 0, "FreeLibrary failed");
        bool loaded = GetModuleHandleW(L"connectkit.dll") != nullptr;
        Check(loaded == stillLoaded, stillLoaded ? "the module went while a thread of it runs"
                                                 : "the module stayed loaded with nothing at work");
    }

private:
    HMODULE module_;
};

// The error status's exports.
struct Errors {
    explicit Errors(Library& library)
        : status(library.Get<void* (*)()>("_ZN11ErrorStatus11GetInstanceEv")()),
          post(library.Get<void (*)(void*, ConnectErrorCode)>(
              "_ZN11ErrorStatus16PostNotificationE16ConnectErrorCode")),
          add(library.Get<bool (*)(void*, Listener*)>(
              "_ZN11ErrorStatus14RegistListenerEP13ErrorListener")),
          remove(library.Get<bool (*)(void*, Listener*)>(
              "_ZN11ErrorStatus16UnregistListenerEP13ErrorListener")) {
        Check(status != nullptr, "ErrorStatus::GetInstance");
    }
    void Post() { post(status, CONNECT_ERROR_GO_ALREADY_EXIST); }

    void* status;
    void (*post)(void*, ConnectErrorCode);
    bool (*add)(void*, Listener*);
    bool (*remove)(void*, Listener*);
};

// Signals each delivery; the self-removing kind unregisters itself and then
// throws, which must not reach the host. A host that loads the DLL at run
// time uses the public headers for types only: it cannot derive from
// ErrorListener (its constructor lives in the DLL), so it lays out the same
// virtual slots instead.
class Listener {
public:
    explicit Listener(Errors* removesItselfAndThrows = nullptr)
        : errors_(removesItselfAndThrows),
          delivered_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    virtual ~Listener() { CloseHandle(delivered_); }
    virtual void OnErrorNotification(std::pair<ConnectErrorCode, std::string> notification) {
        code_ = notification.first;
        SetEvent(delivered_);
        if (errors_) {
            errors_->remove(errors_->status, this);
            throw std::string("a host's listener failed");
        }
    }

    // Registers, posts one code and waits for its delivery.
    void Deliver(Errors& errors) {
        Check(errors.add(errors.status, this), "RegistListener");
        errors.Post();
        Check(WaitForSingleObject(delivered_, kDeliveryLimitMs) == WAIT_OBJECT_0, "no delivery");
        Check(code_ == CONNECT_ERROR_GO_ALREADY_EXIST, "wrong code delivered");
    }

private:
    Errors* errors_;
    HANDLE delivered_;
    ConnectErrorCode code_ = CONNECT_ERROR_SUCCESS;
};

int CreateSoftAP(Library& library, SoftAPInfo& info) {
    return library.Get<int (*)(SoftAPInfo&)>("_Z18SystemCreateSoftAPR10SoftAPInfo")(info);
}

void UseDriver(Library& library) {
    void* api = library.Get<void* (*)()>("_ZN10ConnectKit7WifiAPI11GetInstanceEv")();
    Check(api != nullptr, "WifiAPI::GetInstance");
    _GO_SUPPORTTED_CHANNELS channels{};
    library.Get<int (*)(void*, _GO_SUPPORTTED_CHANNELS*)>(
        "_ZN10ConnectKit7WifiAPI20GetSupportedChannelsEP23_GO_SUPPORTTED_CHANNELS")(api, &channels);
}

void UseChannelLists(Library& library) {
    library.Get<void (*)(int)>("_Z22AddPhoneSupportChanneli")(36);
    library.Get<void (*)(int)>("_Z24AddPhoneSupport24Channeli")(6);
    std::string list24;
    std::string list5;
    int countryCode = 0;
    library.Get<void (*)(std::string&, std::string&, int&)>(
        "_Z16GetPCChannelListRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES5_Ri")(
        list24, list5, countryCode);
    library.Get<void (*)()>("_Z26RemovePhoneSupportChannelsv")();
}

// The host unloads while another of its threads keeps starting the hotspot
// (each start fails within milliseconds where there is no Wi-Fi Direct, so
// the unload lands inside one). The starts in flight finish cleanly.
void UnloadDuringStart() {
    Library library;
    struct Starts {
        Library* library;
        HANDLE firstDone;
        std::atomic<bool> unloaded{false};
        bool allFailed = true;
    } starts{&library, CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    HANDLE thread = CreateThread(
        nullptr, 0,
        [](void* context) -> DWORD {
            auto& starts = *static_cast<Starts*>(context);
            while (!starts.unloaded) {
                SoftAPInfo info;
                starts.allFailed = starts.allFailed && CreateSoftAP(*starts.library, info) < 0;
                SetEvent(starts.firstDone);
            }
            return 0;
        },
        &starts, 0, nullptr);
    Check(thread != nullptr, "CreateThread");
    Check(WaitForSingleObject(starts.firstDone, 10000) == WAIT_OBJECT_0, "the first start hung");
    library.Unload(true);
    starts.unloaded = true;
    Check(WaitForSingleObject(thread, 10000) == WAIT_OBJECT_0, "a start did not return");
    CloseHandle(thread);
    CloseHandle(starts.firstDone);
    Check(starts.allFailed, "a hotspot where the platform has none");
}

// The host's listener stays registered (and alive) after the unload.
void DeliverAndStayRegistered(Library& library) {
    static Listener listener;
    Errors errors(library);
    listener.Deliver(errors);
}

void ListenerUnregistersAndThrows(Library& library) {
    Errors errors(library);
    Listener listener(&errors);
    listener.Deliver(errors);
    // Returns once the worker is done with the throw.
    library.Get<void (*)(void*)>("_ZN11ErrorStatus15DestroyInstanceEv")(errors.status);
    Check(!errors.remove(errors.status, &listener), "the listener stayed registered");
}

// The rounds that leave nothing running unload for real; the last starts
// the error status worker, which keeps the module.
void ThreeTimes() {
    for (int round = 0; round < 3; ++round) {
        Library library;
        UseChannelLists(library);
        UseDriver(library);
        bool last = round == 2;
        if (last) {
            Errors(library).Post();
        }
        library.Unload(last);
    }
}

// Uses one capability and unloads while a thread of the library is still at
// work. The hotspot's is the unload during a start.
void Once(void (*use)(Library&)) {
    Library library;
    use(library);
    library.Unload(true);
}

const std::pair<const char*, void (*)()> kCases[] = {
    {"listener-registered", [] { Once(DeliverAndStayRegistered); }},
    {"listener-throws", [] { Once(ListenerUnregistersAndThrows); }},
    {"three-times", ThreeTimes},
    {"unload-during-start", UnloadDuringStart},
};

}  // namespace

int main(int argc, char** argv) {
    for (const auto& [name, run] : kCases) {
        if (argc == 2 && std::strcmp(argv[1], name) == 0) {
            run();
            std::printf("%s: passed\n", name);
            return 0;
        }
    }
    std::fprintf(stderr, "unknown case\n");
    return 2;
}
