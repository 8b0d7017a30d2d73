#pragma once
// A stand-in Windows Runtime for the Wi-Fi Direct port: objects of our own
// that implement the declared ABI interfaces, handed out through the
// activation seam. They behave like the runtime where the library can tell:
// events and completions arrive on threads of their own, a started
// publisher reports Started (or Aborted with an error), a phone's request
// goes to the listener's handlers, FromIdAsync completes with a connected
// device or fails, a device that leaves reports a status change.
//
// Every call can be made to fail with an HRESULT of the test's choosing, by
// the name the library's errors carry ("IWiFiDirectAdvertisementPublisher::
// Start"). Activation fails by "activate:" or "factory:" and the class name.
// The runtime counts its live objects, the handlers registered on them and
// the delegates that answered with a failure, so tests see leaks, handlers
// left behind and failures that reached the runtime.

#include <functional>
#include <memory>
#include <string>

#include "platform/windows/winrt/RuntimeActivation.h"
#include "winrt/FakeObject.h"

namespace connectkit::test {

class FakeRuntime final : public win::RuntimeActivation {
public:
    FakeRuntime();
    ~FakeRuntime() override { Quiet(); }

    HRESULT ActivateInstance(const wchar_t* classId, IInspectable** instance) override;
    HRESULT GetActivationFactory(const wchar_t* classId, const GUID& iid, void** factory) override;

    // The counters (live objects, registered handlers, closed requests,
    // delegates that answered their event with a failure) and what the
    // newest publisher started with.
    const FakeWorld& world() const { return *world_; }
    FakeWorld::Started Started() const;

    // The world the fakes share, for fakes of further classes.
    const std::shared_ptr<FakeWorld>& shared() const { return world_; }
    // A runtime class: activating it hands out what `maker` makes, and so
    // does asking for its statics. The Wi-Fi Direct classes come provided;
    // tests provide further ones.
    using FactoryMaker = std::function<ComPtr<IInspectable>()>;
    void Provide(const std::wstring& classId, FactoryMaker maker);

    // Forwards to the system's runtime (Wine's) instead of the fakes.
    void UseSystem(bool system) { world_->system = system; }
    void Fail(const std::string& call, HRESULT result);
    void ClearFaults();
    // Started publishers abort with `error` (a WiFiDirectError) instead.
    void AbortStarts(int32_t error);
    // FromIdAsync for this phone ends with AsyncStatus Error.
    void RefuseDevice(const std::wstring& deviceId);
    // The phone asks every listener with a handler to connect; false when
    // no listener has one.
    bool PhoneRequests(const std::wstring& deviceId, const std::wstring& phoneAddress);
    // The phone's device reports Disconnected; false when no device exists.
    bool PhoneLeaves(const std::wstring& deviceId) { return DisconnectDevice(*world_, deviceId); }
    // Waits (bounded) until every event and completion thread has ended.
    bool Quiet(unsigned timeoutMs = 10000);

private:
    // What the maker provided for `classId` made, unless `use` ("activate:"
    // or "factory:") of it fails.
    HRESULT Made(const char* use, const wchar_t* classId, ComPtr<IInspectable>& made);

    std::shared_ptr<FakeWorld> world_ = std::make_shared<FakeWorld>();
    std::mutex mutex_;
    std::map<std::wstring, FactoryMaker> provided_;
};

// Polls `condition` until it holds or `timeoutMs` passed; events arrive on
// the fakes' own threads.
bool Eventually(const std::function<bool()>& condition, unsigned timeoutMs = 10000);

// What `call` threw as the runtime's failure: its HRESULT and text; S_OK
// and no text when it threw nothing.
struct Thrown {
    HRESULT hresult = S_OK;
    std::string what;
};
Thrown ThrownBy(const std::function<void()>& call);

// Makes each call fail with `result` in turn: its use must throw the result,
// with a text naming the call (a factory by its class) and the result.
using FailingUses = std::vector<std::pair<const char*, std::function<void()>>>;
void ExpectEachFailureThrown(FakeRuntime& runtime, HRESULT result, const FailingUses& uses);

// The runtime the backend test program's Windows backend activates from.
FakeRuntime& InstalledRuntime();

}  // namespace connectkit::test
