#pragma once
// Windows.Devices.Bluetooth.Advertisement (and the signal-strength filter of
// Windows.Devices.Bluetooth), as far as this library calls it, with the
// generic instances over its classes.

#include "platform/windows/winrt/abi/Foundation.h"
#include "platform/windows/winrt/abi/Streams.h"

namespace connectkit::win::abi {

struct IBluetoothLEManufacturerData : IInspectable {
    static constexpr GUID kIid = {
        0x912dba18, 0x6963, 0x4533, {0xb0, 0x61, 0x46, 0x94, 0xda, 0xfb, 0x34, 0xe5}};
    virtual HRESULT STDMETHODCALLTYPE get_CompanyId(uint16_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_CompanyId(uint16_t value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Data(IBuffer** value) = 0;
};

struct IBluetoothLEAdvertisementDataSection : IInspectable {
    static constexpr GUID kIid = {
        0xd7213314, 0x3a43, 0x40f9, {0xb6, 0xf0, 0x92, 0xbf, 0xef, 0xc3, 0x4a, 0xe3}};
    virtual HRESULT STDMETHODCALLTYPE get_DataType(uint8_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_DataType(uint8_t value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Data(IBuffer** value) = 0;
};

// The factory makes patterns; the library reads none back, so none of the
// pattern's own slots is declared.
struct IBluetoothLEAdvertisementBytePattern : IInspectable {
    static constexpr GUID kIid = {
        0xfbfad7f2, 0xb9c5, 0x4a08, {0xbc, 0x51, 0x50, 0x2f, 0x8e, 0xf6, 0x8a, 0x79}};
};

struct IBluetoothLEAdvertisementBytePatternFactory : IInspectable {
    static constexpr GUID kIid = {
        0xc2e24d73, 0xfd5c, 0x4ec3, {0xbe, 0x2a, 0x9c, 0xa6, 0xfa, 0x11, 0xb7, 0xbd}};
    virtual HRESULT STDMETHODCALLTYPE Create(uint8_t dataType, int16_t offset, IBuffer* data,
                                             IBluetoothLEAdvertisementBytePattern** value) = 0;
};

// IVector<BluetoothLEManufacturerData>
// pinterface({913337e9-11a1-4345-a3a2-4e7f956e222d};rc(Windows.Devices.Bluetooth.Advertisement.BluetoothLEManufacturerData;{912dba18-6963-4533-b061-4694dafb34e5}))
struct IManufacturerDataVector : IInspectable {
    static constexpr GUID kIid = {
        0x52d75b45, 0x1d24, 0x5eeb, {0xba, 0xbb, 0x65, 0xef, 0xfa, 0xe4, 0x5e, 0x46}};
    virtual HRESULT STDMETHODCALLTYPE GetAt(uint32_t index,
                                            IBluetoothLEManufacturerData** item) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(uint32_t* size) = 0;
};

// IVector<BluetoothLEAdvertisementDataSection>
// pinterface({913337e9-11a1-4345-a3a2-4e7f956e222d};rc(Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementDataSection;{d7213314-3a43-40f9-b6f0-92bfefc34ae3}))
struct IDataSectionVector : IInspectable {
    static constexpr GUID kIid = {
        0xb6f71ad2, 0xe2cf, 0x5d54, {0xb6, 0xf1, 0x90, 0x96, 0x4e, 0xe5, 0xd4, 0xda}};
    virtual HRESULT STDMETHODCALLTYPE GetAt(uint32_t index,
                                            IBluetoothLEAdvertisementDataSection** item) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(uint32_t* size) = 0;
};

// IVector<BluetoothLEAdvertisementBytePattern>, up to Clear. GetView's
// IVectorView is never called and travels as an opaque object.
// pinterface({913337e9-11a1-4345-a3a2-4e7f956e222d};rc(Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementBytePattern;{fbfad7f2-b9c5-4a08-bc51-502f8ef68a79}))
struct IBytePatternVector : IInspectable {
    static constexpr GUID kIid = {
        0x8dd461b7, 0x9775, 0x5e82, {0xa0, 0xa6, 0x66, 0x27, 0xab, 0xd0, 0xd0, 0x10}};
    virtual HRESULT STDMETHODCALLTYPE GetAt(uint32_t index,
                                            IBluetoothLEAdvertisementBytePattern** item) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(uint32_t* size) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetView(IInspectable** view) = 0;
    virtual HRESULT STDMETHODCALLTYPE IndexOf(IBluetoothLEAdvertisementBytePattern* value,
                                              uint32_t* index, Boolean* found) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetAt(uint32_t index,
                                            IBluetoothLEAdvertisementBytePattern* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE InsertAt(uint32_t index,
                                               IBluetoothLEAdvertisementBytePattern* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE RemoveAt(uint32_t index) = 0;
    virtual HRESULT STDMETHODCALLTYPE Append(IBluetoothLEAdvertisementBytePattern* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE RemoveAtEnd() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clear() = 0;
};

// Flags and service UUIDs travel as generic instances this library never
// calls; they are opaque objects here.
struct IBluetoothLEAdvertisement : IInspectable {
    static constexpr GUID kIid = {
        0x066fb2b7, 0x33d1, 0x4e7d, {0x83, 0x67, 0xcf, 0x81, 0xd0, 0xf7, 0x96, 0x53}};
    virtual HRESULT STDMETHODCALLTYPE get_Flags(IInspectable** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Flags(IInspectable* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_LocalName(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_LocalName(HSTRING value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ServiceUuids(IInspectable** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ManufacturerData(IManufacturerDataVector** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_DataSections(IDataSectionVector** value) = 0;
};

struct IBluetoothLEAdvertisementFilter : IInspectable {
    static constexpr GUID kIid = {
        0x131eb0d3, 0xd04e, 0x47b1, {0x83, 0x7e, 0x49, 0x40, 0x5b, 0xf6, 0xf8, 0x0f}};
    virtual HRESULT STDMETHODCALLTYPE get_Advertisement(IBluetoothLEAdvertisement** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Advertisement(IBluetoothLEAdvertisement* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_BytePatterns(IBytePatternVector** value) = 0;
};

struct IBluetoothSignalStrengthFilter : IInspectable {
    static constexpr GUID kIid = {
        0xdf7b7391, 0x6bb5, 0x4cfe, {0x90, 0xb1, 0x5d, 0x73, 0x24, 0xed, 0xcf, 0x7f}};
    virtual HRESULT STDMETHODCALLTYPE get_InRangeThresholdInDBm(IInt16Reference** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_InRangeThresholdInDBm(IInt16Reference* value) = 0;
};

struct IBluetoothLEAdvertisementReceivedEventArgs : IInspectable {
    static constexpr GUID kIid = {
        0x27987ddf, 0xe596, 0x41be, {0x8d, 0x43, 0x9e, 0x67, 0x31, 0xd4, 0xa9, 0x13}};
    virtual HRESULT STDMETHODCALLTYPE get_RawSignalStrengthInDBm(int16_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_BluetoothAddress(uint64_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_AdvertisementType(int32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Timestamp(int64_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Advertisement(IBluetoothLEAdvertisement** value) = 0;
};

struct IBluetoothLEAdvertisementWatcherStoppedEventArgs : IInspectable {
    static constexpr GUID kIid = {
        0xdd40f84d, 0xe7b9, 0x43e3, {0x9c, 0x04, 0x06, 0x85, 0xd0, 0x85, 0xfd, 0x8c}};
    virtual HRESULT STDMETHODCALLTYPE get_Error(int32_t* value) = 0;
};

struct IBluetoothLEAdvertisementWatcher;

// TypedEventHandler<BluetoothLEAdvertisementWatcher, BluetoothLEAdvertisementReceivedEventArgs>
// pinterface({9de1c534-6ae1-11e0-84e1-18a905bcc53f};rc(Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcher;{a6ac336f-f3d3-4297-8d6c-c81ea6623f40});rc(Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementReceivedEventArgs;{27987ddf-e596-41be-8d43-9e6731d4a913}))
struct IAdvertisementReceivedHandler : IUnknown {
    static constexpr GUID kIid = {
        0x90eb4eca, 0xd465, 0x5ea0, {0xa6, 0x1c, 0x03, 0x3c, 0x8c, 0x5e, 0xce, 0xf2}};
    virtual HRESULT STDMETHODCALLTYPE Invoke(IBluetoothLEAdvertisementWatcher* sender,
                                             IBluetoothLEAdvertisementReceivedEventArgs* args) = 0;
};

// TypedEventHandler<BluetoothLEAdvertisementWatcher,
// BluetoothLEAdvertisementWatcherStoppedEventArgs>
// pinterface({9de1c534-6ae1-11e0-84e1-18a905bcc53f};rc(Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcher;{a6ac336f-f3d3-4297-8d6c-c81ea6623f40});rc(Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcherStoppedEventArgs;{dd40f84d-e7b9-43e3-9c04-0685d085fd8c}))
struct IWatcherStoppedHandler : IUnknown {
    static constexpr GUID kIid = {
        0x9936a4db, 0xdc99, 0x55c3, {0x9e, 0x9b, 0xbf, 0x48, 0x54, 0xbd, 0x9e, 0xab}};
    virtual HRESULT STDMETHODCALLTYPE
    Invoke(IBluetoothLEAdvertisementWatcher* sender,
           IBluetoothLEAdvertisementWatcherStoppedEventArgs* args) = 0;
};

// The four sampling limits are TimeSpans, which travel as their int64_t.
struct IBluetoothLEAdvertisementWatcher : IInspectable {
    static constexpr GUID kIid = {
        0xa6ac336f, 0xf3d3, 0x4297, {0x8d, 0x6c, 0xc8, 0x1e, 0xa6, 0x62, 0x3f, 0x40}};
    virtual HRESULT STDMETHODCALLTYPE get_MinSamplingInterval(int64_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_MaxSamplingInterval(int64_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_MinOutOfRangeTimeout(int64_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_MaxOutOfRangeTimeout(int64_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Status(int32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ScanningMode(int32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_ScanningMode(int32_t value) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    get_SignalStrengthFilter(IBluetoothSignalStrengthFilter** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    put_SignalStrengthFilter(IBluetoothSignalStrengthFilter* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    get_AdvertisementFilter(IBluetoothLEAdvertisementFilter** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    put_AdvertisementFilter(IBluetoothLEAdvertisementFilter* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE Start() = 0;
    virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
    virtual HRESULT STDMETHODCALLTYPE add_Received(IAdvertisementReceivedHandler* handler,
                                                   Token* token) = 0;
    virtual HRESULT STDMETHODCALLTYPE remove_Received(Token token) = 0;
    virtual HRESULT STDMETHODCALLTYPE add_Stopped(IWatcherStoppedHandler* handler,
                                                  Token* token) = 0;
    virtual HRESULT STDMETHODCALLTYPE remove_Stopped(Token token) = 0;
};

// Runtime class names, as activation takes them.
inline constexpr const wchar_t* kAdvertisementWatcherClass =
    L"Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcher";
inline constexpr const wchar_t* kBytePatternClass =
    L"Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementBytePattern";

}  // namespace connectkit::win::abi
