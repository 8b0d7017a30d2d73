#include "winrt/FakeRuntime.h"

namespace connectkit::test {

HRESULT FakeRuntime::ActivateInstance(const wchar_t* classId, IInspectable** instance) {
    if (world_->system) {
        return win::SystemActivation()->ActivateInstance(classId, instance);
    }
    *instance = nullptr;
    std::wstring name(classId);
    if (HRESULT fault = world_->Fault("activate:" + std::string(name.begin(), name.end()))) {
        return fault;
    }
    if (name == kPublisherClass) {
        *instance = NewFakePublisher(world_).Detach();
    } else if (name == kConnectionListenerClass) {
        *instance = NewFakeListener(world_).Detach();
    } else if (name == kPasswordCredentialClass) {
        *instance = NewFakeCredential(world_).Detach();
    } else {
        return REGDB_E_CLASSNOTREG;
    }
    return S_OK;
}

HRESULT FakeRuntime::GetActivationFactory(const wchar_t* classId, const GUID& iid, void** factory) {
    if (world_->system) {
        return win::SystemActivation()->GetActivationFactory(classId, iid, factory);
    }
    *factory = nullptr;
    std::wstring name(classId);
    if (HRESULT fault = world_->Fault("factory:" + std::string(name.begin(), name.end()))) {
        return fault;
    }
    if (name == kDeviceClass) {
        return NewFakeDeviceStatics(world_)->QueryInterface(iid, factory);
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
    return maker()->QueryInterface(iid, factory);
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
    return Eventually([this] { return world_->pending == 0; }, timeoutMs);
}

FakeWorld::Started FakeRuntime::Started() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    return world_->started;
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
