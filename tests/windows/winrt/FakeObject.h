#pragma once
// What the fake runtime objects share: the world they live in (faults,
// counters, the objects events are sent to), IInspectable over the
// library's COM object base, and events with their registered delegates,
// raised on threads of their own.

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/windows/core/ComPtr.h"
#include "platform/windows/winrt/ComObject.h"
#include "platform/windows/winrt/abi/WiFiDirect.h"

namespace connectkit::test {

using win::ComPtr;
using namespace win::abi;

class FakeListener;
class FakeDevice;

struct FakeWorld {
    std::atomic<long> live{0};
    std::atomic<long> handlers{0};
    std::atomic<long> closedRequests{0};
    std::atomic<long> failedInvokes{0};
    std::atomic<bool> system{false};

    mutable std::mutex mutex;
    std::map<std::string, HRESULT> faults;
    bool abortStarts = false;
    int32_t abortError = 0;
    std::set<std::wstring> refused;
    std::map<std::wstring, std::wstring> phoneAddresses;
    // What the newest publisher was configured with when it started.
    struct Started {
        std::wstring ssid;
        std::wstring password;
        bool asLegacyGroupOwner = false;
    } started;
    // Objects events are sent to; each entry is removed by its destructor.
    std::vector<FakeListener*> listeners;
    std::vector<FakeDevice*> devices;

    HRESULT Fault(const std::string& call) {
        std::lock_guard<std::mutex> lock(mutex);
        auto found = faults.find(call);
        return found == faults.end() ? S_OK : found->second;
    }

    // Runs `work` on a thread of its own, as the runtime's pool would.
    static void Spawn(const std::shared_ptr<FakeWorld>& world, std::function<void()> work);
    // Waits (bounded) until every thread Spawn started has ended, and with
    // it whatever its work held; false when one is still running.
    bool Quiet(unsigned timeoutMs);

    ~FakeWorld();

private:
    // Native threads, which a test can wait for, and which leave out
    // winpthreads' detaching (see platform/DetachedThread.h).
    std::mutex threadsMutex_;
    std::vector<HANDLE> threads_;
};

inline HSTRING NewString(const std::wstring& text) {
    HSTRING string = nullptr;
    WindowsCreateString(text.c_str(), static_cast<UINT32>(text.size()), &string);
    return string;
}

inline std::wstring Read(HSTRING string) {
    UINT32 length = 0;
    const wchar_t* buffer = WindowsGetStringRawBuffer(string, &length);
    return buffer ? std::wstring(buffer, length) : std::wstring();
}

// For a slot the library never calls: nothing, and says so.
template <typename Out>
HRESULT Unused(Out* out) {
    *out = Out{};
    return E_NOTIMPL;
}

// The slots of an interface the library never calls, one line each: a
// getter hands out nothing, a setter refuses its value.
#define CK_UNUSED_GET(slot, Type)                          \
    HRESULT STDMETHODCALLTYPE slot(Type* value) override { \
        return Unused(value);                              \
    }
#define CK_UNUSED_PUT(slot, Type)                   \
    HRESULT STDMETHODCALLTYPE slot(Type) override { \
        return E_NOTIMPL;                           \
    }
// The add_ and remove_ slots of event `name`, served by the Event `member`.
#define CK_FAKE_EVENT(name, Handler, member)                                        \
    HRESULT STDMETHODCALLTYPE add_##name(Handler* handler, Token* token) override { \
        return member.Add(handler, token);                                          \
    }                                                                               \
    HRESULT STDMETHODCALLTYPE remove_##name(Token token) override {                 \
        return member.Remove(token);                                                \
    }
// A getter of `Interface` handing out `value` (a number, a text or an
// object), and a setter keeping its value (a text as text, an object with a
// reference) in `field`; each fails as "Interface::slot".
#define CK_FAKE_GET(Interface, slot, Type, value)         \
    HRESULT STDMETHODCALLTYPE slot(Type* out) override {  \
        return Answer(#Interface "::" #slot, out, value); \
    }
#define CK_FAKE_PUT(Interface, slot, Type, field)              \
    HRESULT STDMETHODCALLTYPE slot(Type value) override {      \
        return Put(#Interface "::" #slot, field, Kept(value)); \
    }

inline std::wstring Kept(HSTRING value) {
    return Read(value);
}
template <typename Interface>
ComPtr<Interface> Kept(Interface* value) {
    return ComPtr<Interface>(value);
}
template <typename Value>
Value Kept(Value value) {
    return value;
}

// An [out] pointer to `object` as its base `Interface`, with a reference.
template <typename Interface, typename Object>
HRESULT Give(const ComPtr<Object>& object, Interface** out) {
    *out = object.Get();
    if (*out) {
        (*out)->AddRef();
    }
    return S_OK;
}

// A fake runtime object implementing `Interfaces`, counted in the world's
// live objects.
template <typename... Interfaces>
class Fake : public win::ComObject<Interfaces...> {
public:
    explicit Fake(std::shared_ptr<FakeWorld> world) : world_(std::move(world)) { ++world_->live; }
    ~Fake() override { --world_->live; }

    using win::ComObject<Interfaces...>::TryAddRef;

    HRESULT STDMETHODCALLTYPE GetIids(ULONG* count, IID** iids) override {
        *count = 0;
        return Unused(iids);
    }
    HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* name) override { return Unused(name); }
    HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* level) override {
        *level = BaseTrust;
        return S_OK;
    }

protected:
    HRESULT Fault(const char* call) { return world_->Fault(call); }

    // What most slots answer: the fault set for `call`, or else they set
    // `field`, or hand out `value` (a number, a text or an object; a text or
    // an object is handed out as nothing on a fault).
    template <typename Field, typename Value>
    HRESULT Put(const char* call, Field& field, Value value) {
        if (HRESULT fault = Fault(call)) {
            return fault;
        }
        field = std::move(value);
        return S_OK;
    }
    template <typename Out, typename Value>
    HRESULT Answer(const char* call, Out* out, const Value& value) {
        if constexpr (std::is_pointer_v<Out>) {
            *out = nullptr;
        }
        if (HRESULT fault = Fault(call)) {
            return fault;
        }
        if constexpr (std::is_same_v<Out, HSTRING>) {
            *out = NewString(value);
        } else if constexpr (std::is_pointer_v<Out>) {
            return Give(value, out);
        } else {
            *out = value;
        }
        return S_OK;
    }

    std::shared_ptr<FakeWorld> world_;
};

template <typename Object, typename... Args>
ComPtr<Object> Make(Args&&... args) {
    ComPtr<Object> object;
    object.Attach(new Object(std::forward<Args>(args)...));
    return object;
}

// `object` as its first interface's IInspectable, with a reference.
template <typename Object>
ComPtr<IInspectable> Inspectable(const ComPtr<Object>& object) {
    ComPtr<IInspectable> result;
    object->QueryInterface(kIidInspectable, reinterpret_cast<void**>(result.GetAddressOf()));
    return result;
}

// A runtime vector or vector view of which the library calls GetAt and
// get_Size only, failing as "<name>::GetAt" and "<name>::get_Size".
template <typename View, typename Item, typename Object>
class FakeView final : public Fake<View> {
public:
    FakeView(std::shared_ptr<FakeWorld> world, std::string name, std::vector<ComPtr<Object>> items)
        : Fake<View>(std::move(world)), name_(std::move(name)), items_(std::move(items)) {}

    HRESULT STDMETHODCALLTYPE GetAt(uint32_t index, Item** item) override {
        *item = nullptr;
        return index < items_.size()
                   ? this->Answer((name_ + "::GetAt").c_str(), item, items_[index])
                   : static_cast<HRESULT>(0x8000000B);  // E_BOUNDS
    }
    HRESULT STDMETHODCALLTYPE get_Size(uint32_t* size) override {
        return this->Put((name_ + "::get_Size").c_str(), *size,
                         static_cast<uint32_t>(items_.size()));
    }

private:
    std::string name_;
    std::vector<ComPtr<Object>> items_;
};

// One event of one fake: the delegates registered on it, by token. Adding
// and removing fail as "<owner>::add_<event>" and "<owner>::remove_<event>".
template <typename Handler>
class Event {
public:
    Event(std::shared_ptr<FakeWorld> world, const std::string& owner, const std::string& event)
        : world_(std::move(world)),
          addCall_(owner + "::add_" + event),
          removeCall_(owner + "::remove_" + event) {}
    ~Event() { world_->handlers -= static_cast<long>(handlers_.size()); }

    HRESULT Add(Handler* handler, Token* token) {
        if (HRESULT fault = world_->Fault(addCall_)) {
            return fault;
        }
        if (!handler || !token) {
            return E_INVALIDARG;
        }
        static std::atomic<Token> next{0x1000};
        std::lock_guard<std::mutex> lock(mutex_);
        *token = ++next;
        handlers_[*token] = ComPtr<Handler>(handler);
        ++world_->handlers;
        return S_OK;
    }
    HRESULT Remove(Token token) {
        if (HRESULT fault = world_->Fault(removeCall_)) {
            return fault;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        if (handlers_.erase(token) > 0) {
            --world_->handlers;
        }
        return S_OK;
    }

    // Calls every handler registered now on a thread of its own, with the
    // arguments `arguments` makes there; a failing handler is counted.
    // False when none is registered.
    template <typename Sender, typename MakeArguments>
    bool Raise(ComPtr<Sender> sender, MakeArguments arguments) {
        std::vector<ComPtr<Handler>> handlers;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            for (auto& [token, handler] : handlers_) {
                handlers.push_back(handler);
            }
        }
        if (handlers.empty()) {
            return false;
        }
        FakeWorld::Spawn(world_, [world = world_, sender, handlers, arguments] {
            auto args = arguments();
            for (auto& handler : handlers) {
                if (FAILED(handler->Invoke(sender.Get(), args.Get()))) {
                    ++world->failedInvokes;
                }
            }
        });
        return true;
    }

private:
    std::shared_ptr<FakeWorld> world_;
    std::string addCall_;
    std::string removeCall_;
    std::mutex mutex_;
    std::map<Token, ComPtr<Handler>> handlers_;
};

// Keeps `object` registered in `list` for the world's finders.
template <typename Object>
void Enlist(FakeWorld& world, std::vector<Object*>& list, Object* object) {
    std::lock_guard<std::mutex> lock(world.mutex);
    list.push_back(object);
}

template <typename Object>
void Dismiss(FakeWorld& world, std::vector<Object*>& list, Object* object) {
    std::lock_guard<std::mutex> lock(world.mutex);
    list.erase(std::remove(list.begin(), list.end(), object), list.end());
}

// The objects in `list` that are still alive, each with a reference.
template <typename Object>
std::vector<ComPtr<Object>> Find(FakeWorld& world, std::vector<Object*>& list) {
    std::lock_guard<std::mutex> lock(world.mutex);
    std::vector<ComPtr<Object>> found;
    for (auto* object : list) {
        if (object->TryAddRef()) {
            ComPtr<Object> held;
            held.Attach(object);
            found.push_back(held);
        }
    }
    return found;
}

// The fakes by runtime class, each with one reference for the caller.
ComPtr<IInspectable> NewFakePublisher(const std::shared_ptr<FakeWorld>& world);
ComPtr<IInspectable> NewFakeCredential(const std::shared_ptr<FakeWorld>& world);
ComPtr<IInspectable> NewFakeListener(const std::shared_ptr<FakeWorld>& world);
ComPtr<IInspectable> NewFakeDeviceStatics(const std::shared_ptr<FakeWorld>& world);

// A phone asks every listener with a handler to connect; false when none has.
bool RequestConnection(FakeWorld& world, const std::wstring& deviceId);
// The phone's open devices report Disconnected; false when it has none.
bool DisconnectDevice(FakeWorld& world, const std::wstring& deviceId);

}  // namespace connectkit::test
