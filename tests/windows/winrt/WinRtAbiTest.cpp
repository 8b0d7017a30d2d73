// The hand-declared runtime interfaces against the values printed from
// Windows metadata: a wrong IID makes every QueryInterface fail on a real PC
// while everything still works against fakes. Generic instances are listed
// with the IIDs Windows' headers print for the signatures written beside
// their declarations.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "platform/windows/winrt/abi/BluetoothAdvertisement.h"
#include "platform/windows/winrt/abi/Credentials.h"
#include "platform/windows/winrt/abi/Enumeration.h"
#include "platform/windows/winrt/abi/Foundation.h"
#include "platform/windows/winrt/abi/Networking.h"
#include "platform/windows/winrt/abi/Radios.h"
#include "platform/windows/winrt/abi/Streams.h"
#include "platform/windows/winrt/abi/WiFiDirect.h"

namespace connectkit::test {
namespace {

using namespace win::abi;

// "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", lower case.
std::string IidText(const GUID& iid) {
    char text[40];
    std::snprintf(text, sizeof text, "%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  static_cast<unsigned long>(iid.Data1), iid.Data2, iid.Data3, iid.Data4[0],
                  iid.Data4[1], iid.Data4[2], iid.Data4[3], iid.Data4[4], iid.Data4[5],
                  iid.Data4[6], iid.Data4[7]);
    return text;
}

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
        CK_IID(IInt16Reference, "6ec9e41b-6709-5647-9918-a1270110fc4e"),
        CK_IID(IPasswordCredential, "6ab18989-c720-41a7-a6c1-feadb36329a0"),
        CK_IID(IDeviceInformation, "aba0fb95-4398-489d-8e44-e6130927011f"),
        CK_IID(IHostName, "bf8ecaad-ed96-49a7-9084-d416cae88dcb"),
        CK_IID(IEndpointPair, "33a0aa36-f8fa-4b30-b856-76517c3bd06d"),
        CK_IID(IEndpointPairView, "8780a851-6d48-5006-9288-81f3d7045a96"),
        CK_IID(IWiFiDirectLegacySettings, "a64fdbba-f2fd-4567-a91b-f5c2f5321057"),
        CK_IID(IWiFiDirectAdvertisement, "ab511a2d-2a06-49a1-a584-61435c7905a6"),
        CK_IID(IWiFiDirectAdvertisementPublisherStatusChangedEventArgs,
               "aafde53c-5481-46e6-90dd-32116518f192"),
        CK_IID(IPublisherStatusChangedHandler, "de73cba7-370d-550c-b23a-53dd0b4e480d"),
        CK_IID(IWiFiDirectAdvertisementPublisher, "b35a2d1a-9b1f-45d9-925a-694d66df68ef"),
        CK_IID(IWiFiDirectConnectionRequest, "8eb99605-914f-49c3-a614-d18dc5b19b43"),
        CK_IID(IWiFiDirectConnectionRequestedEventArgs, "f99d20be-d38d-484f-8215-e7b65abf244c"),
        CK_IID(IConnectionRequestedHandler, "d04b0403-1fe2-532f-8e47-4823a14e624f"),
        CK_IID(IWiFiDirectConnectionListener, "699c1b0d-8d13-4ee9-b9ec-9c72f8251f7d"),
        CK_IID(IDeviceStatusChangedHandler, "9208929a-2a3c-50ad-aa08-a0a986edbabe"),
        CK_IID(IWiFiDirectDevice, "72deaaa8-72eb-4dae-8a28-8513355d2777"),
        CK_IID(IDeviceOperationCompletedHandler, "d34abe17-fb19-57be-bc41-0eb83dea151c"),
        CK_IID(IDeviceOperation, "dad01b61-a82d-566c-ba82-224c11500669"),
        CK_IID(IWiFiDirectDeviceStatics, "e86cb57c-3aac-4851-a792-482aaf931b04"),
        CK_IID(IRadio, "252118df-b33e-416a-875f-1cf38ae2d83e"),
        CK_IID(IRadioStatics, "5fb6a12e-67cb-46ae-aae9-65919f86eff4"),
        CK_IID(IRadioView, "65066c36-090b-5466-b8e5-e7565dc34175"),
        CK_IID(IRadioListOperation, "040b54a1-203e-58f5-943f-c1cca86bd532"),
        CK_IID(IRadioListCompletedHandler, "d30691e6-60a0-59c9-8965-5bbe282e8208"),
        CK_IID(IRadioAccessOperation, "21fb30ef-072f-502c-9898-d0c3b2cd9ac5"),
        CK_IID(IRadioStateChangedHandler, "fc6aa329-b586-5ebb-9e85-3f6b84ebdf18"),
        CK_IID(IPropertyValueStatics, "629bdbc8-d932-4ff4-96b9-8d96c5c1e858"),
        CK_IID(IBuffer, "905a0fe0-bc53-11df-8c49-001e4fc686da"),
        CK_IID(IBufferFactory, "71af914d-c10f-484b-bc50-14bc623b3a27"),
        CK_IID(IBufferByteAccess, "905a0fef-bc53-11df-8c49-001e4fc686da"),
        CK_IID(IBluetoothLEAdvertisementWatcher, "a6ac336f-f3d3-4297-8d6c-c81ea6623f40"),
        CK_IID(IAdvertisementReceivedHandler, "90eb4eca-d465-5ea0-a61c-033c8c5ecef2"),
        CK_IID(IWatcherStoppedHandler, "9936a4db-dc99-55c3-9e9b-bf4854bd9eab"),
        CK_IID(IBluetoothLEAdvertisementReceivedEventArgs, "27987ddf-e596-41be-8d43-9e6731d4a913"),
        CK_IID(IBluetoothLEAdvertisementWatcherStoppedEventArgs,
               "dd40f84d-e7b9-43e3-9c04-0685d085fd8c"),
        CK_IID(IBluetoothLEAdvertisement, "066fb2b7-33d1-4e7d-8367-cf81d0f79653"),
        CK_IID(IBluetoothLEManufacturerData, "912dba18-6963-4533-b061-4694dafb34e5"),
        CK_IID(IManufacturerDataVector, "52d75b45-1d24-5eeb-babb-65effae45e46"),
        CK_IID(IBluetoothLEAdvertisementDataSection, "d7213314-3a43-40f9-b6f0-92bfefc34ae3"),
        CK_IID(IDataSectionVector, "b6f71ad2-e2cf-5d54-b6f1-90964ee5d4da"),
        CK_IID(IBluetoothLEAdvertisementFilter, "131eb0d3-d04e-47b1-837e-49405bf6f80f"),
        CK_IID(IBluetoothLEAdvertisementBytePattern, "fbfad7f2-b9c5-4a08-bc51-502f8ef68a79"),
        CK_IID(IBytePatternVector, "8dd461b7-9775-5e82-a0a6-6627abd0d010"),
        CK_IID(IBluetoothLEAdvertisementBytePatternFactory, "c2e24d73-fd5c-4ec3-be2a-9ca6fa11b7bd"),
        CK_IID(IBluetoothSignalStrengthFilter, "df7b7391-6bb5-4cfe-90b1-5d7324edcf7f"),
    };
    for (const auto& entry : table) {
        EXPECT_EQ(IidText(entry.declared), entry.iid) << entry.name;
    }
}

}  // namespace
}  // namespace connectkit::test
