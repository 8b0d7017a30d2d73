#pragma once
// Hand-declared Windows Runtime ABI, one header per runtime namespace; this
// one holds what every namespace builds on. mingw-w64 ships no headers for
// the device namespaces, and some of the generic instances it does ship
// carry wrong IIDs. Each interface names its IID as kIid; slot order is
// declaration order, after IUnknown's three methods (and IInspectable's
// three for runtime interfaces). Only the slots up to the last one this
// library calls are declared: a prefix of a vtable is still that vtable.
//
// Generic instances are declared as the concrete interfaces they are, with
// the IID computed from their type signature, which is written beside each,
// in the header of the namespace of their type arguments.
//
// Conventions: `Boolean` is the runtime's one-byte boolean; enums travel as
// int32_t; EventRegistrationToken and DateTime travel as their int64_t
// value, which is the same ABI as the one-field structs.

// clang-format off
#include <windows.h>
#include <inspectable.h>
#include <winstring.h>
// clang-format on

#include <cstdint>

namespace connectkit::win::abi {

using Boolean = unsigned char;
using Token = int64_t;

// IAgileObject: the marker an object answers to say it may be called from
// any apartment.
inline constexpr GUID kIidAgileObject = {
    0x94ea2b94, 0xe9cc, 0x49e0, {0xc0, 0xff, 0xee, 0x64, 0xca, 0x8f, 0x5b, 0x90}};
inline constexpr GUID kIidUnknown = {
    0x00000000, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr GUID kIidInspectable = {
    0xaf86e2e0, 0xb12d, 0x4c6a, {0x9c, 0x5a, 0xd7, 0xaa, 0x65, 0x10, 0x1e, 0x90}};

struct IAsyncInfo : IInspectable {
    static constexpr GUID kIid = {
        0x00000036, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
    virtual HRESULT STDMETHODCALLTYPE get_Id(uint32_t* id) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Status(int32_t* status) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ErrorCode(HRESULT* errorCode) = 0;
    virtual HRESULT STDMETHODCALLTYPE Cancel() = 0;
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
};

struct IClosable : IInspectable {
    static constexpr GUID kIid = {
        0x30d5a829, 0x7fa4, 0x4026, {0x83, 0xbb, 0xd7, 0x5b, 0xae, 0x4e, 0xa9, 0x9e}};
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
};

// IReference<Int16>: a boxed, nullable Int16.
// pinterface({61c17706-2d65-11e0-9ae8-d48564015472};i2)
struct IInt16Reference : IInspectable {
    static constexpr GUID kIid = {
        0x6ec9e41b, 0x6709, 0x5647, {0x99, 0x18, 0xa1, 0x27, 0x01, 0x10, 0xfc, 0x4e}};
    virtual HRESULT STDMETHODCALLTYPE get_Value(int16_t* value) = 0;
};

// Windows.Foundation.PropertyValue's statics: the runtime's own boxes.
struct IPropertyValueStatics : IInspectable {
    static constexpr GUID kIid = {
        0x629bdbc8, 0xd932, 0x4ff4, {0x96, 0xb9, 0x8d, 0x96, 0xc5, 0xc1, 0xe8, 0x58}};
    virtual HRESULT STDMETHODCALLTYPE CreateEmpty(IInspectable** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateUInt8(uint8_t value, IInspectable** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateInt16(int16_t value, IInspectable** result) = 0;
};

inline constexpr const wchar_t* kPropertyValueClass = L"Windows.Foundation.PropertyValue";

}  // namespace connectkit::win::abi
