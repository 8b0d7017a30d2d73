#pragma once
// Windows.Networking, as far as this library calls it.

#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win::abi {

struct IHostName : IInspectable {
    static constexpr GUID kIid = {
        0xbf8ecaad, 0xed96, 0x49a7, {0x90, 0x84, 0xd4, 0x16, 0xca, 0xe8, 0x8d, 0xcb}};
    virtual HRESULT STDMETHODCALLTYPE get_IPInformation(IInspectable** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_RawName(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_DisplayName(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CanonicalName(HSTRING* value) = 0;
};

struct IEndpointPair : IInspectable {
    static constexpr GUID kIid = {
        0x33a0aa36, 0xf8fa, 0x4b30, {0xb8, 0x56, 0x76, 0x51, 0x7c, 0x3b, 0xd0, 0x6d}};
    virtual HRESULT STDMETHODCALLTYPE get_LocalHostName(IHostName** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_LocalHostName(IHostName* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_LocalServiceName(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_LocalServiceName(HSTRING value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_RemoteHostName(IHostName** value) = 0;
};

// IVectorView<Windows.Networking.EndpointPair>
// pinterface({bbe1fa4c-b0e3-4583-baef-1f1b2e483e56};rc(Windows.Networking.EndpointPair;{33a0aa36-f8fa-4b30-b856-76517c3bd06d}))
struct IEndpointPairView : IInspectable {
    static constexpr GUID kIid = {
        0x8780a851, 0x6d48, 0x5006, {0x92, 0x88, 0x81, 0xf3, 0xd7, 0x04, 0x5a, 0x96}};
    virtual HRESULT STDMETHODCALLTYPE GetAt(uint32_t index, IEndpointPair** item) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(uint32_t* size) = 0;
};

}  // namespace connectkit::win::abi
