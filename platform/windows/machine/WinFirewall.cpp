#include "platform/windows/machine/WinFirewall.h"

// clang-format off
#include <windows.h>
#include <ole2.h>
#include <oleauto.h>
#include <initguid.h>
#include <netfw.h>
// clang-format on

#include "platform/windows/core/ComPtr.h"

namespace connectkit::win {
namespace {

// A rule per profile at most, plus slack; a rule that keeps coming back is
// reported instead of looping forever.
constexpr int kMaxRemovals = 8;

uint32_t Win32FromHresult(HRESULT hr) {
    if (HRESULT_FACILITY(hr) == FACILITY_WIN32) {
        return HRESULT_CODE(hr);
    }
    if (hr == E_NOTIMPL) {
        return ERROR_CALL_NOT_IMPLEMENTED;
    }
    if (hr == REGDB_E_CLASSNOTREG) {
        return ERROR_NOT_SUPPORTED;
    }
    return static_cast<uint32_t>(hr);
}

// COM for the calling thread, unless the thread already chose an apartment.
class ComScope {
public:
    ComScope() : result_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ~ComScope() {
        if (SUCCEEDED(result_)) {
            CoUninitialize();
        }
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

    HRESULT Usable() const { return result_ == RPC_E_CHANGED_MODE ? S_OK : result_; }

private:
    HRESULT result_;
};

class Bstr {
public:
    explicit Bstr(const wchar_t* text) : text_(SysAllocString(text)) {}
    ~Bstr() { SysFreeString(text_); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    BSTR get() const { return text_; }

private:
    BSTR text_;
};

HRESULT RemoveAllNamed(INetFwRules& rules, const Bstr& name) {
    for (int removed = 0; removed <= kMaxRemovals; ++removed) {
        ComPtr<INetFwRule> rule;
        HRESULT hr = rules.Item(name.get(), rule.GetAddressOf());
        if (hr == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)) {
            return S_OK;
        }
        if (FAILED(hr)) {
            return hr;
        }
        if (removed == kMaxRemovals) {
            break;
        }
        if (hr = rules.Remove(name.get()); FAILED(hr)) {
            return hr;
        }
    }
    return HRESULT_FROM_WIN32(ERROR_CAN_NOT_COMPLETE);
}

}  // namespace

uint32_t WinFirewall::RemoveDhcpRules() {
    ComScope com;
    if (HRESULT hr = com.Usable(); FAILED(hr)) {
        return Win32FromHresult(hr);
    }
    ComPtr<INetFwPolicy2> policy;
    HRESULT hr =
        CoCreateInstance(CLSID_NetFwPolicy2, nullptr, CLSCTX_INPROC_SERVER, IID_INetFwPolicy2,
                         reinterpret_cast<void**>(policy.GetAddressOf()));
    if (FAILED(hr)) {
        return Win32FromHresult(hr);
    }
    ComPtr<INetFwRules> rules;
    if (hr = policy->get_Rules(rules.GetAddressOf()); FAILED(hr)) {
        return Win32FromHresult(hr);
    }
    Bstr name(kDhcpRuleName);
    if (!name.get()) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    return Win32FromHresult(RemoveAllNamed(*rules.Get(), name));
}

}  // namespace connectkit::win
