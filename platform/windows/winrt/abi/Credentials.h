#pragma once
// Windows.Security.Credentials, as far as this library calls it.

#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win::abi {

struct IPasswordCredential : IInspectable {
    static constexpr GUID kIid = {
        0x6ab18989, 0xc720, 0x41a7, {0xa6, 0xc1, 0xfe, 0xad, 0xb3, 0x63, 0x29, 0xa0}};
    virtual HRESULT STDMETHODCALLTYPE get_Resource(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Resource(HSTRING value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_UserName(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_UserName(HSTRING value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Password(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Password(HSTRING value) = 0;
};

inline constexpr const wchar_t* kPasswordCredentialClass =
    L"Windows.Security.Credentials.PasswordCredential";

}  // namespace connectkit::win::abi
