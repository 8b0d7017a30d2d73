#pragma once
// Windows.Storage.Streams: the runtime's byte buffers, and the COM
// interface that reaches their bytes.

#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win::abi {

struct IBuffer : IInspectable {
    static constexpr GUID kIid = {
        0x905a0fe0, 0xbc53, 0x11df, {0x8c, 0x49, 0x00, 0x1e, 0x4f, 0xc6, 0x86, 0xda}};
    virtual HRESULT STDMETHODCALLTYPE get_Capacity(uint32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Length(uint32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Length(uint32_t value) = 0;
};

// The Buffer class's factory: an empty buffer of `capacity` bytes.
struct IBufferFactory : IInspectable {
    static constexpr GUID kIid = {
        0x71af914d, 0xc10f, 0x484b, {0xbc, 0x50, 0x14, 0xbc, 0x62, 0x3b, 0x3a, 0x27}};
    virtual HRESULT STDMETHODCALLTYPE Create(uint32_t capacity, IBuffer** value) = 0;
};

// robuffer.h's IBufferByteAccess, a plain COM interface: the buffer's bytes,
// valid while the buffer lives.
struct IBufferByteAccess : IUnknown {
    static constexpr GUID kIid = {
        0x905a0fef, 0xbc53, 0x11df, {0x8c, 0x49, 0x00, 0x1e, 0x4f, 0xc6, 0x86, 0xda}};
    virtual HRESULT STDMETHODCALLTYPE Buffer(uint8_t** value) = 0;
};

inline constexpr const wchar_t* kBufferClass = L"Windows.Storage.Streams.Buffer";

}  // namespace connectkit::win::abi
