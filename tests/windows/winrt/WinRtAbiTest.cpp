// The hand-declared runtime interfaces against the reference values printed
// from Windows metadata: a wrong IID makes every QueryInterface fail on a
// real PC while everything still works against fakes. Generic instances are
// not listed: their IIDs follow from their signatures, checked below.

#include <gtest/gtest.h>

#include <string>

#include "platform/windows/winrt/abi/BluetoothAdvertisement.h"
#include "platform/windows/winrt/abi/Credentials.h"
#include "platform/windows/winrt/abi/Enumeration.h"
#include "platform/windows/winrt/abi/Foundation.h"
#include "platform/windows/winrt/abi/Networking.h"
#include "platform/windows/winrt/abi/Radios.h"
#include "platform/windows/winrt/abi/WiFiDirect.h"
#include "winrt/ParameterizedIid.h"

namespace connectkit::test {
namespace {

using namespace win::abi;

struct Published {
    const char* name;
    GUID declared;
    const char* iid;
};

#define CK_IID(Interface, iid) \
    { #Interface, Interface::kIid, iid }

TEST(WinRtAbi, DeclaredIidsAreThePublishedOnes) {
    const Published table[] = {
        {"IUnknown", kIidUnknown, "00000000-0000-0000-c000-000000000046"},
        {"IInspectable", kIidInspectable, "af86e2e0-b12d-4c6a-9c5a-d7aa65101e90"},
        {"IAgileObject", kIidAgileObject, "94ea2b94-e9cc-49e0-c0ff-ee64ca8f5b90"},
        CK_IID(IAsyncInfo, "00000036-0000-0000-c000-000000000046"),
        CK_IID(IClosable, "30d5a829-7fa4-4026-83bb-d75bae4ea99e"),
        CK_IID(IPasswordCredential, "6ab18989-c720-41a7-a6c1-feadb36329a0"),
        CK_IID(IDeviceInformation, "aba0fb95-4398-489d-8e44-e6130927011f"),
        CK_IID(IHostName, "bf8ecaad-ed96-49a7-9084-d416cae88dcb"),
        CK_IID(IEndpointPair, "33a0aa36-f8fa-4b30-b856-76517c3bd06d"),
        CK_IID(IWiFiDirectLegacySettings, "a64fdbba-f2fd-4567-a91b-f5c2f5321057"),
        CK_IID(IWiFiDirectAdvertisement, "ab511a2d-2a06-49a1-a584-61435c7905a6"),
        CK_IID(IWiFiDirectAdvertisementPublisherStatusChangedEventArgs,
               "aafde53c-5481-46e6-90dd-32116518f192"),
        CK_IID(IWiFiDirectAdvertisementPublisher, "b35a2d1a-9b1f-45d9-925a-694d66df68ef"),
        CK_IID(IWiFiDirectConnectionRequest, "8eb99605-914f-49c3-a614-d18dc5b19b43"),
        CK_IID(IWiFiDirectConnectionRequestedEventArgs, "f99d20be-d38d-484f-8215-e7b65abf244c"),
        CK_IID(IWiFiDirectConnectionListener, "699c1b0d-8d13-4ee9-b9ec-9c72f8251f7d"),
        CK_IID(IWiFiDirectDevice, "72deaaa8-72eb-4dae-8a28-8513355d2777"),
        CK_IID(IWiFiDirectDeviceStatics, "e86cb57c-3aac-4851-a792-482aaf931b04"),
        CK_IID(IRadio, "252118df-b33e-416a-875f-1cf38ae2d83e"),
        CK_IID(IRadioStatics, "5fb6a12e-67cb-46ae-aae9-65919f86eff4"),
        CK_IID(IPropertyValueStatics, "629bdbc8-d932-4ff4-96b9-8d96c5c1e858"),
        CK_IID(IBuffer, "905a0fe0-bc53-11df-8c49-001e4fc686da"),
        CK_IID(IBufferFactory, "71af914d-c10f-484b-bc50-14bc623b3a27"),
        CK_IID(IBufferByteAccess, "905a0fef-bc53-11df-8c49-001e4fc686da"),
        CK_IID(IBluetoothLEAdvertisementWatcher, "a6ac336f-f3d3-4297-8d6c-c81ea6623f40"),
        CK_IID(IBluetoothLEAdvertisementReceivedEventArgs, "27987ddf-e596-41be-8d43-9e6731d4a913"),
        CK_IID(IBluetoothLEAdvertisementWatcherStoppedEventArgs,
               "dd40f84d-e7b9-43e3-9c04-0685d085fd8c"),
        CK_IID(IBluetoothLEAdvertisement, "066fb2b7-33d1-4e7d-8367-cf81d0f79653"),
        CK_IID(IBluetoothLEManufacturerData, "912dba18-6963-4533-b061-4694dafb34e5"),
        CK_IID(IBluetoothLEAdvertisementDataSection, "d7213314-3a43-40f9-b6f0-92bfefc34ae3"),
        CK_IID(IBluetoothLEAdvertisementFilter, "131eb0d3-d04e-47b1-837e-49405bf6f80f"),
        CK_IID(IBluetoothLEAdvertisementBytePattern, "fbfad7f2-b9c5-4a08-bc51-502f8ef68a79"),
        CK_IID(IBluetoothLEAdvertisementBytePatternFactory, "c2e24d73-fd5c-4ec3-be2a-9ca6fa11b7bd"),
        CK_IID(IBluetoothSignalStrengthFilter, "df7b7391-6bb5-4cfe-90b1-5d7324edcf7f"),
    };
    for (const auto& entry : table) {
        EXPECT_EQ(IidText(entry.declared), entry.iid) << entry.name;
    }
}

// A signature and IID that Windows headers print for a generic instance:
// anchors the hash to the runtime's, so a constant made with the same wrong
// hash cannot pass below.
TEST(WinRtAbi, SignatureHashGivesThePublishedInstanceIid) {
    EXPECT_EQ(IidText(IidFromSignature("pinterface({9fc2b0bb-e446-44e2-aa61-9cab8f636af2};b1)")),
              "cdb5efb3-5788-509d-9be1-71ccb8a3362a");
}

std::string RuntimeClass(const std::string& name, const GUID& defaultInterface) {
    return "rc(" + name + ";{" + IidText(defaultInterface) + "})";
}

// The declared generic instances follow from their type arguments.
TEST(WinRtAbi, DeclaredInstanceIidsFollowFromTheirSignatures) {
    auto instance = [](const char* generic, const std::string& arguments) {
        return std::string("pinterface({") + generic + "};" + arguments + ")";
    };
    const char* asyncOperation = "9fc2b0bb-e446-44e2-aa61-9cab8f636af2";
    const char* completedHandler = "fcdcf02c-e5d8-4478-915a-4d90b74b83a5";
    const char* typedHandler = "9de1c534-6ae1-11e0-84e1-18a905bcc53f";
    const char* vectorView = "bbe1fa4c-b0e3-4583-baef-1f1b2e483e56";
    const char* vector = "913337e9-11a1-4345-a3a2-4e7f956e222d";
    const std::string ns = "Windows.Devices.WiFiDirect.";
    const std::string ble = "Windows.Devices.Bluetooth.Advertisement.BluetoothLE";
    auto device = RuntimeClass(ns + "WiFiDirectDevice", IWiFiDirectDevice::kIid);
    auto publisher = RuntimeClass(ns + "WiFiDirectAdvertisementPublisher",
                                  IWiFiDirectAdvertisementPublisher::kIid);
    auto statusArgs = RuntimeClass(ns + "WiFiDirectAdvertisementPublisherStatusChangedEventArgs",
                                   IWiFiDirectAdvertisementPublisherStatusChangedEventArgs::kIid);
    auto listener =
        RuntimeClass(ns + "WiFiDirectConnectionListener", IWiFiDirectConnectionListener::kIid);
    auto requestArgs = RuntimeClass(ns + "WiFiDirectConnectionRequestedEventArgs",
                                    IWiFiDirectConnectionRequestedEventArgs::kIid);
    auto pair = RuntimeClass("Windows.Networking.EndpointPair", IEndpointPair::kIid);
    auto radio = RuntimeClass("Windows.Devices.Radios.Radio", IRadio::kIid);
    auto radioView = instance(vectorView, radio);
    auto watcher =
        RuntimeClass(ble + "AdvertisementWatcher", IBluetoothLEAdvertisementWatcher::kIid);
    auto received = RuntimeClass(ble + "AdvertisementReceivedEventArgs",
                                 IBluetoothLEAdvertisementReceivedEventArgs::kIid);
    auto stopped = RuntimeClass(ble + "AdvertisementWatcherStoppedEventArgs",
                                IBluetoothLEAdvertisementWatcherStoppedEventArgs::kIid);
    auto manufacturer = RuntimeClass(ble + "ManufacturerData", IBluetoothLEManufacturerData::kIid);
    auto section =
        RuntimeClass(ble + "AdvertisementDataSection", IBluetoothLEAdvertisementDataSection::kIid);
    auto pattern =
        RuntimeClass(ble + "AdvertisementBytePattern", IBluetoothLEAdvertisementBytePattern::kIid);
    const std::string inspectable = ";cinterface(IInspectable)";

    const std::pair<std::string, GUID> instances[] = {
        {instance(asyncOperation, device), IDeviceOperation::kIid},
        {instance(completedHandler, device), IDeviceOperationCompletedHandler::kIid},
        {instance(typedHandler, publisher + ";" + statusArgs),
         IPublisherStatusChangedHandler::kIid},
        {instance(typedHandler, listener + ";" + requestArgs), IConnectionRequestedHandler::kIid},
        {instance(typedHandler, device + inspectable), IDeviceStatusChangedHandler::kIid},
        {instance(vectorView, pair), IEndpointPairView::kIid},
        {radioView, IRadioView::kIid},
        {instance(asyncOperation, radioView), IRadioListOperation::kIid},
        {instance(completedHandler, radioView), IRadioListCompletedHandler::kIid},
        {instance(typedHandler, radio + inspectable), IRadioStateChangedHandler::kIid},
        {instance(asyncOperation, "enum(Windows.Devices.Radios.RadioAccessStatus;i4)"),
         IRadioAccessOperation::kIid},
        {instance(vector, manufacturer), IManufacturerDataVector::kIid},
        {instance(vector, section), IDataSectionVector::kIid},
        {instance(vector, pattern), IBytePatternVector::kIid},
        {instance(typedHandler, watcher + ";" + received), IAdvertisementReceivedHandler::kIid},
        {instance(typedHandler, watcher + ";" + stopped), IWatcherStoppedHandler::kIid},
        {instance("61c17706-2d65-11e0-9ae8-d48564015472", "i2"), IInt16Reference::kIid},
    };
    for (const auto& [signature, declared] : instances) {
        EXPECT_EQ(IidText(IidFromSignature(signature)), IidText(declared)) << signature;
    }
}

}  // namespace
}  // namespace connectkit::test
