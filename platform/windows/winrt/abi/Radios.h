#pragma once
// Windows.Devices.Radios, as far as this library calls it, with the generic
// instances over its types.

#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win::abi {

struct IRadio;

// TypedEventHandler<Radio, Object>
// pinterface({9de1c534-6ae1-11e0-84e1-18a905bcc53f};rc(Windows.Devices.Radios.Radio;{252118df-b33e-416a-875f-1cf38ae2d83e});cinterface(IInspectable))
struct IRadioStateChangedHandler : IUnknown {
    static constexpr GUID kIid = {
        0xfc6aa329, 0xb586, 0x5ebb, {0x9e, 0x85, 0x3f, 0x6b, 0x84, 0xeb, 0xdf, 0x18}};
    virtual HRESULT STDMETHODCALLTYPE Invoke(IRadio* sender, IInspectable* args) = 0;
};

// IAsyncOperation<RadioAccessStatus>: SetStateAsync's result, which this
// library releases without awaiting, so calls none of its slots.
// pinterface({9fc2b0bb-e446-44e2-aa61-9cab8f636af2};enum(Windows.Devices.Radios.RadioAccessStatus;i4))
struct IRadioAccessOperation : IInspectable {
    static constexpr GUID kIid = {
        0x21fb30ef, 0x072f, 0x502c, {0x98, 0x98, 0xd0, 0xc3, 0xb2, 0xcd, 0x9a, 0xc5}};
};

struct IRadio : IInspectable {
    static constexpr GUID kIid = {
        0x252118df, 0xb33e, 0x416a, {0x87, 0x5f, 0x1c, 0xf3, 0x8a, 0xe2, 0xd8, 0x3e}};
    virtual HRESULT STDMETHODCALLTYPE SetStateAsync(int32_t value,
                                                    IRadioAccessOperation** operation) = 0;
    virtual HRESULT STDMETHODCALLTYPE add_StateChanged(IRadioStateChangedHandler* handler,
                                                       Token* token) = 0;
    virtual HRESULT STDMETHODCALLTYPE remove_StateChanged(Token token) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_State(int32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Name(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Kind(int32_t* value) = 0;
};

// IVectorView<Radio>
// pinterface({bbe1fa4c-b0e3-4583-baef-1f1b2e483e56};rc(Windows.Devices.Radios.Radio;{252118df-b33e-416a-875f-1cf38ae2d83e}))
struct IRadioView : IInspectable {
    static constexpr GUID kIid = {
        0x65066c36, 0x090b, 0x5466, {0xb8, 0xe5, 0xe7, 0x56, 0x5d, 0xc3, 0x41, 0x75}};
    virtual HRESULT STDMETHODCALLTYPE GetAt(uint32_t index, IRadio** item) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(uint32_t* size) = 0;
};

struct IRadioListOperation;

// AsyncOperationCompletedHandler<IVectorView<Radio>>
// pinterface({fcdcf02c-e5d8-4478-915a-4d90b74b83a5};pinterface({bbe1fa4c-b0e3-4583-baef-1f1b2e483e56};rc(Windows.Devices.Radios.Radio;{252118df-b33e-416a-875f-1cf38ae2d83e})))
struct IRadioListCompletedHandler : IUnknown {
    static constexpr GUID kIid = {
        0xd30691e6, 0x60a0, 0x59c9, {0x89, 0x65, 0x5b, 0xbe, 0x28, 0x2e, 0x82, 0x08}};
    virtual HRESULT STDMETHODCALLTYPE Invoke(IRadioListOperation* operation, int32_t status) = 0;
};

// IAsyncOperation<IVectorView<Radio>>
// pinterface({9fc2b0bb-e446-44e2-aa61-9cab8f636af2};pinterface({bbe1fa4c-b0e3-4583-baef-1f1b2e483e56};rc(Windows.Devices.Radios.Radio;{252118df-b33e-416a-875f-1cf38ae2d83e})))
struct IRadioListOperation : IInspectable {
    static constexpr GUID kIid = {
        0x040b54a1, 0x203e, 0x58f5, {0x94, 0x3f, 0xc1, 0xcc, 0xa8, 0x6b, 0xd5, 0x32}};
    virtual HRESULT STDMETHODCALLTYPE put_Completed(IRadioListCompletedHandler* handler) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Completed(IRadioListCompletedHandler** handler) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetResults(IRadioView** results) = 0;
};

struct IRadioStatics : IInspectable {
    static constexpr GUID kIid = {
        0x5fb6a12e, 0x67cb, 0x46ae, {0xaa, 0xe9, 0x65, 0x91, 0x9f, 0x86, 0xef, 0xf4}};
    virtual HRESULT STDMETHODCALLTYPE GetRadiosAsync(IRadioListOperation** operation) = 0;
};

// The runtime class, as activation takes its name.
inline constexpr const wchar_t* kRadioClass = L"Windows.Devices.Radios.Radio";

}  // namespace connectkit::win::abi
