#include "winrt/FakeRuntime.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <system_error>

#include "platform/ports/Errors.h"

namespace connectkit::test {

namespace {

// Runs the work Spawn handed over and lets go of it (and of the fakes it
// holds) before the thread ends.
DWORD WINAPI RunWork(void* parameter) {
    std::unique_ptr<std::function<void()>> work(static_cast<std::function<void()>*>(parameter));
    (*work)();
    return 0;
}

}  // namespace

void FakeWorld::Spawn(const std::shared_ptr<FakeWorld>& world, std::function<void()> work) {
    auto owned = std::make_unique<std::function<void()>>(std::move(work));
    HANDLE thread = CreateThread(nullptr, 0, RunWork, owned.get(), 0, nullptr);
    if (!thread) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                                "CreateThread");
    }
    owned.release();
    std::lock_guard<std::mutex> lock(world->threadsMutex_);
    world->threads_.push_back(thread);
}

bool FakeWorld::Quiet(unsigned timeoutMs) {
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    for (;;) {
        HANDLE thread = nullptr;
        {
            std::lock_guard<std::mutex> lock(threadsMutex_);
            if (threads_.empty()) {
                return true;
            }
            thread = threads_.front();
        }
        ULONGLONG now = GetTickCount64();
        DWORD left = now < deadline ? static_cast<DWORD>(deadline - now) : 0;
        if (WaitForSingleObject(thread, left) != WAIT_OBJECT_0) {
            return false;
        }
        std::lock_guard<std::mutex> lock(threadsMutex_);
        threads_.erase(std::find(threads_.begin(), threads_.end(), thread));
        CloseHandle(thread);
    }
}

FakeWorld::~FakeWorld() {
    for (HANDLE thread : threads_) {
        CloseHandle(thread);
    }
}

FakeRuntime::FakeRuntime() {
    for (auto [name, make] : {std::pair{kPublisherClass, &NewFakePublisher},
                              std::pair{kConnectionListenerClass, &NewFakeListener},
                              std::pair{kPasswordCredentialClass, &NewFakeCredential},
                              std::pair{kDeviceClass, &NewFakeDeviceStatics}}) {
        Provide(name, [world = world_, make = make] { return make(world); });
    }
}

HRESULT FakeRuntime::ActivateInstance(const wchar_t* classId, IInspectable** instance) {
    if (world_->system) {
        return win::SystemActivation()->ActivateInstance(classId, instance);
    }
    ComPtr<IInspectable> made;
    HRESULT result = Made("activate:", classId, made);
    *instance = made.Detach();
    return result;
}

HRESULT FakeRuntime::GetActivationFactory(const wchar_t* classId, const GUID& iid, void** factory) {
    if (world_->system) {
        return win::SystemActivation()->GetActivationFactory(classId, iid, factory);
    }
    *factory = nullptr;
    ComPtr<IInspectable> made;
    HRESULT result = Made("factory:", classId, made);
    return FAILED(result) ? result : made->QueryInterface(iid, factory);
}

HRESULT FakeRuntime::Made(const char* use, const wchar_t* classId, ComPtr<IInspectable>& made) {
    std::wstring name(classId);
    if (HRESULT fault = world_->Fault(use + std::string(name.begin(), name.end()))) {
        return fault;
    }
    FactoryMaker maker;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = provided_.find(name);
        if (found == provided_.end()) {
            return REGDB_E_CLASSNOTREG;
        }
        maker = found->second;
    }
    // Made without our lock: a maker takes its own objects' locks, and
    // activations from several threads must not be serialised here.
    made = maker();
    return S_OK;
}

void FakeRuntime::Provide(const std::wstring& classId, FactoryMaker maker) {
    std::lock_guard<std::mutex> lock(mutex_);
    provided_[classId] = std::move(maker);
}

void FakeRuntime::Fail(const std::string& call, HRESULT result) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->faults[call] = result;
}

void FakeRuntime::ClearFaults() {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->faults.clear();
    world_->abortStarts = false;
    world_->refused.clear();
}

void FakeRuntime::AbortStarts(int32_t error) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->abortStarts = true;
    world_->abortError = error;
}

void FakeRuntime::RefuseDevice(const std::wstring& deviceId) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->refused.insert(deviceId);
}

bool FakeRuntime::PhoneRequests(const std::wstring& deviceId, const std::wstring& phoneAddress) {
    {
        std::lock_guard<std::mutex> lock(world_->mutex);
        world_->phoneAddresses[deviceId] = phoneAddress;
    }
    return RequestConnection(*world_, deviceId);
}

bool FakeRuntime::Quiet(unsigned timeoutMs) {
    return world_->Quiet(timeoutMs);
}

FakeWorld::Started FakeRuntime::Started() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    return world_->started;
}

Thrown ThrownBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const platform::PlatformError& error) {
        return {error.hresult(), error.what()};
    }
    return {};
}

void ExpectEachFailureThrown(FakeRuntime& runtime, HRESULT result, const FailingUses& uses) {
    char hresult[16];
    std::snprintf(hresult, sizeof hresult, "0x%08lx", static_cast<unsigned long>(result));
    for (const auto& [call, use] : uses) {
        std::string name = call;
        if (name.rfind("factory:", 0) == 0) {
            name = "RoGetActivationFactory(" + name.substr(name.rfind('.') + 1) + ")";
        }
        runtime.Fail(call, result);
        auto thrown = ThrownBy(use);
        EXPECT_EQ(thrown.hresult, result) << call;
        EXPECT_NE(thrown.what.find(name + " failed, hresult " + hresult), std::string::npos)
            << thrown.what;
        runtime.ClearFaults();
    }
}

bool Eventually(const std::function<bool()>& condition, unsigned timeoutMs) {
    for (unsigned waited = 0; !condition(); waited += 5) {
        if (waited >= timeoutMs) {
            return false;
        }
        Sleep(5);
    }
    return true;
}

}  // namespace connectkit::test
