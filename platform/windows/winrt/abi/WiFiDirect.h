#pragma once
// Windows.Devices.WiFiDirect, as far as this library calls it, with the
// generic instances over its classes.

#include "platform/windows/winrt/abi/Credentials.h"
#include "platform/windows/winrt/abi/Enumeration.h"
#include "platform/windows/winrt/abi/Foundation.h"
#include "platform/windows/winrt/abi/Networking.h"

namespace connectkit::win::abi {

struct IWiFiDirectLegacySettings : IInspectable {
    static constexpr GUID kIid = {
        0xa64fdbba, 0xf2fd, 0x4567, {0xa9, 0x1b, 0xf5, 0xc2, 0xf5, 0x32, 0x10, 0x57}};
    virtual HRESULT STDMETHODCALLTYPE get_IsEnabled(Boolean* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_IsEnabled(Boolean value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Ssid(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Ssid(HSTRING value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Passphrase(IPasswordCredential** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Passphrase(IPasswordCredential* value) = 0;
};

struct IWiFiDirectAdvertisement : IInspectable {
    static constexpr GUID kIid = {
        0xab511a2d, 0x2a06, 0x49a1, {0xa5, 0x84, 0x61, 0x43, 0x5c, 0x79, 0x05, 0xa6}};
    // The information elements travel as IVector<WiFiDirectInformationElement>,
    // which this library never touches.
    virtual HRESULT STDMETHODCALLTYPE get_InformationElements(IInspectable** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_InformationElements(IInspectable* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ListenStateDiscoverability(int32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_ListenStateDiscoverability(int32_t value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_IsAutonomousGroupOwnerEnabled(Boolean* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_IsAutonomousGroupOwnerEnabled(Boolean value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_LegacySettings(IWiFiDirectLegacySettings** value) = 0;
};

struct IWiFiDirectAdvertisementPublisherStatusChangedEventArgs : IInspectable {
    static constexpr GUID kIid = {
        0xaafde53c, 0x5481, 0x46e6, {0x90, 0xdd, 0x32, 0x11, 0x65, 0x18, 0xf1, 0x92}};
    virtual HRESULT STDMETHODCALLTYPE get_Status(int32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Error(int32_t* value) = 0;
};

struct IWiFiDirectAdvertisementPublisher;

// TypedEventHandler<WiFiDirectAdvertisementPublisher,
// WiFiDirectAdvertisementPublisherStatusChangedEventArgs>
// pinterface({9de1c534-6ae1-11e0-84e1-18a905bcc53f};rc(Windows.Devices.WiFiDirect.WiFiDirectAdvertisementPublisher;{b35a2d1a-9b1f-45d9-925a-694d66df68ef});rc(Windows.Devices.WiFiDirect.WiFiDirectAdvertisementPublisherStatusChangedEventArgs;{aafde53c-5481-46e6-90dd-32116518f192}))
struct IPublisherStatusChangedHandler : IUnknown {
    static constexpr GUID kIid = {
        0xde73cba7, 0x370d, 0x550c, {0xb2, 0x3a, 0x53, 0xdd, 0x0b, 0x4e, 0x48, 0x0d}};
    virtual HRESULT STDMETHODCALLTYPE
    Invoke(IWiFiDirectAdvertisementPublisher* sender,
           IWiFiDirectAdvertisementPublisherStatusChangedEventArgs* args) = 0;
};

struct IWiFiDirectAdvertisementPublisher : IInspectable {
    static constexpr GUID kIid = {
        0xb35a2d1a, 0x9b1f, 0x45d9, {0x92, 0x5a, 0x69, 0x4d, 0x66, 0xdf, 0x68, 0xef}};
    virtual HRESULT STDMETHODCALLTYPE get_Advertisement(IWiFiDirectAdvertisement** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Status(int32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE add_StatusChanged(IPublisherStatusChangedHandler* handler,
                                                        Token* token) = 0;
    virtual HRESULT STDMETHODCALLTYPE remove_StatusChanged(Token token) = 0;
    virtual HRESULT STDMETHODCALLTYPE Start() = 0;
    virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
};

struct IWiFiDirectConnectionRequest : IInspectable {
    static constexpr GUID kIid = {
        0x8eb99605, 0x914f, 0x49c3, {0xa6, 0x14, 0xd1, 0x8d, 0xc5, 0xb1, 0x9b, 0x43}};
    virtual HRESULT STDMETHODCALLTYPE get_DeviceInformation(IDeviceInformation** value) = 0;
};

struct IWiFiDirectConnectionRequestedEventArgs : IInspectable {
    static constexpr GUID kIid = {
        0xf99d20be, 0xd38d, 0x484f, {0x82, 0x15, 0xe7, 0xb6, 0x5a, 0xbf, 0x24, 0x4c}};
    virtual HRESULT STDMETHODCALLTYPE
    GetConnectionRequest(IWiFiDirectConnectionRequest** value) = 0;
};

struct IWiFiDirectConnectionListener;

// TypedEventHandler<WiFiDirectConnectionListener, WiFiDirectConnectionRequestedEventArgs>
// pinterface({9de1c534-6ae1-11e0-84e1-18a905bcc53f};rc(Windows.Devices.WiFiDirect.WiFiDirectConnectionListener;{699c1b0d-8d13-4ee9-b9ec-9c72f8251f7d});rc(Windows.Devices.WiFiDirect.WiFiDirectConnectionRequestedEventArgs;{f99d20be-d38d-484f-8215-e7b65abf244c}))
struct IConnectionRequestedHandler : IUnknown {
    static constexpr GUID kIid = {
        0xd04b0403, 0x1fe2, 0x532f, {0x8e, 0x47, 0x48, 0x23, 0xa1, 0x4e, 0x62, 0x4f}};
    virtual HRESULT STDMETHODCALLTYPE Invoke(IWiFiDirectConnectionListener* sender,
                                             IWiFiDirectConnectionRequestedEventArgs* args) = 0;
};

struct IWiFiDirectConnectionListener : IInspectable {
    static constexpr GUID kIid = {
        0x699c1b0d, 0x8d13, 0x4ee9, {0xb9, 0xec, 0x9c, 0x72, 0xf8, 0x25, 0x1f, 0x7d}};
    virtual HRESULT STDMETHODCALLTYPE add_ConnectionRequested(IConnectionRequestedHandler* handler,
                                                              Token* token) = 0;
    virtual HRESULT STDMETHODCALLTYPE remove_ConnectionRequested(Token token) = 0;
};

struct IWiFiDirectDevice;

// TypedEventHandler<WiFiDirectDevice, Object>
// pinterface({9de1c534-6ae1-11e0-84e1-18a905bcc53f};rc(Windows.Devices.WiFiDirect.WiFiDirectDevice;{72deaaa8-72eb-4dae-8a28-8513355d2777});cinterface(IInspectable))
struct IDeviceStatusChangedHandler : IUnknown {
    static constexpr GUID kIid = {
        0x9208929a, 0x2a3c, 0x50ad, {0xaa, 0x08, 0xa0, 0xa9, 0x86, 0xed, 0xba, 0xbe}};
    virtual HRESULT STDMETHODCALLTYPE Invoke(IWiFiDirectDevice* sender, IInspectable* args) = 0;
};

struct IWiFiDirectDevice : IInspectable {
    static constexpr GUID kIid = {
        0x72deaaa8, 0x72eb, 0x4dae, {0x8a, 0x28, 0x85, 0x13, 0x35, 0x5d, 0x27, 0x77}};
    virtual HRESULT STDMETHODCALLTYPE get_ConnectionStatus(int32_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_DeviceId(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    add_ConnectionStatusChanged(IDeviceStatusChangedHandler* handler, Token* token) = 0;
    virtual HRESULT STDMETHODCALLTYPE remove_ConnectionStatusChanged(Token token) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetConnectionEndpointPairs(IEndpointPairView** value) = 0;
};

struct IDeviceOperation;

// AsyncOperationCompletedHandler<WiFiDirectDevice>
// pinterface({fcdcf02c-e5d8-4478-915a-4d90b74b83a5};rc(Windows.Devices.WiFiDirect.WiFiDirectDevice;{72deaaa8-72eb-4dae-8a28-8513355d2777}))
struct IDeviceOperationCompletedHandler : IUnknown {
    static constexpr GUID kIid = {
        0xd34abe17, 0xfb19, 0x57be, {0xbc, 0x41, 0x0e, 0xb8, 0x3d, 0xea, 0x15, 0x1c}};
    virtual HRESULT STDMETHODCALLTYPE Invoke(IDeviceOperation* operation, int32_t status) = 0;
};

// IAsyncOperation<WiFiDirectDevice>
// pinterface({9fc2b0bb-e446-44e2-aa61-9cab8f636af2};rc(Windows.Devices.WiFiDirect.WiFiDirectDevice;{72deaaa8-72eb-4dae-8a28-8513355d2777}))
struct IDeviceOperation : IInspectable {
    static constexpr GUID kIid = {
        0xdad01b61, 0xa82d, 0x566c, {0xba, 0x82, 0x22, 0x4c, 0x11, 0x50, 0x06, 0x69}};
    virtual HRESULT STDMETHODCALLTYPE put_Completed(IDeviceOperationCompletedHandler* handler) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Completed(IDeviceOperationCompletedHandler** handler) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetResults(IWiFiDirectDevice** results) = 0;
};

struct IWiFiDirectDeviceStatics : IInspectable {
    static constexpr GUID kIid = {
        0xe86cb57c, 0x3aac, 0x4851, {0xa7, 0x92, 0x48, 0x2a, 0xaf, 0x93, 0x1b, 0x04}};
    virtual HRESULT STDMETHODCALLTYPE GetDeviceSelector(HSTRING* selector) = 0;
    virtual HRESULT STDMETHODCALLTYPE FromIdAsync(HSTRING deviceId,
                                                  IDeviceOperation** operation) = 0;
};

// Runtime class names, as activation takes them.
inline constexpr const wchar_t* kPublisherClass =
    L"Windows.Devices.WiFiDirect.WiFiDirectAdvertisementPublisher";
inline constexpr const wchar_t* kConnectionListenerClass =
    L"Windows.Devices.WiFiDirect.WiFiDirectConnectionListener";
inline constexpr const wchar_t* kDeviceClass = L"Windows.Devices.WiFiDirect.WiFiDirectDevice";

}  // namespace connectkit::win::abi
