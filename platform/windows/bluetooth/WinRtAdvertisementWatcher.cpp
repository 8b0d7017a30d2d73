#include "platform/windows/bluetooth/WinRtAdvertisementWatcher.h"

#include <cstdio>
#include <exception>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ports/Errors.h"
#include "platform/windows/winrt/Activate.h"
#include "platform/windows/winrt/Delegate.h"
#include "platform/windows/winrt/RuntimeBuffer.h"

namespace connectkit::win {
namespace {

using ReceivedArgs = abi::IBluetoothLEAdvertisementReceivedEventArgs;
using StoppedArgs = abi::IBluetoothLEAdvertisementWatcherStoppedEventArgs;

constexpr uint64_t kAddressMask = 0xFFFFFFFFFFFFull;
// An extended advertisement of 1,650 bytes holds at most 825 sections; a
// platform counting more is not believed past this.
constexpr uint32_t kMaxSections = 1024;
// A section's length byte counts its type too, so its data (and manufacturer
// data, which is such a section's data after the company) stays within this.
constexpr uint32_t kMaxSectionBytes = 254;

uint32_t BoundedSize(uint32_t size, const char* what) {
    if (size > kMaxSections) {
        LogErrorFun("[WinRT] %u %s reported; reading the first %u", size, what, kMaxSections);
        return kMaxSections;
    }
    return size;
}

std::vector<platform::BleManufacturerData> ReadManufacturerData(
    abi::IBluetoothLEAdvertisement& advertisement) {
    auto vector = Fetch<abi::IManufacturerDataVector>(
        [&](abi::IManufacturerDataVector** value) {
            return advertisement.get_ManufacturerData(value);
        },
        "IBluetoothLEAdvertisement::get_ManufacturerData");
    uint32_t size = 0;
    Check(vector->get_Size(&size), "IVector<BluetoothLEManufacturerData>::get_Size");
    std::vector<platform::BleManufacturerData> entries;
    for (uint32_t index = 0, count = BoundedSize(size, "manufacturer entries"); index < count;
         ++index) {
        auto entry = Fetch<abi::IBluetoothLEManufacturerData>(
            [&](abi::IBluetoothLEManufacturerData** value) { return vector->GetAt(index, value); },
            "IVector<BluetoothLEManufacturerData>::GetAt");
        platform::BleManufacturerData read;
        Check(entry->get_CompanyId(&read.companyId), "IBluetoothLEManufacturerData::get_CompanyId");
        ComPtr<abi::IBuffer> data;
        Check(entry->get_Data(data.GetAddressOf()), "IBluetoothLEManufacturerData::get_Data");
        char what[48];
        std::snprintf(what, sizeof what, "manufacturer data 0x%04X", read.companyId);
        if (ReadBuffer(data.Get(), what, kMaxSectionBytes, read.data)) {
            entries.push_back(std::move(read));
        }
    }
    return entries;
}

std::vector<platform::BleDataSection> ReadSections(abi::IBluetoothLEAdvertisement& advertisement) {
    auto vector = Fetch<abi::IDataSectionVector>(
        [&](abi::IDataSectionVector** value) { return advertisement.get_DataSections(value); },
        "IBluetoothLEAdvertisement::get_DataSections");
    uint32_t size = 0;
    Check(vector->get_Size(&size), "IVector<BluetoothLEAdvertisementDataSection>::get_Size");
    std::vector<platform::BleDataSection> sections;
    for (uint32_t index = 0, count = BoundedSize(size, "data sections"); index < count; ++index) {
        auto section = Fetch<abi::IBluetoothLEAdvertisementDataSection>(
            [&](abi::IBluetoothLEAdvertisementDataSection** value) {
                return vector->GetAt(index, value);
            },
            "IVector<BluetoothLEAdvertisementDataSection>::GetAt");
        platform::BleDataSection read;
        Check(section->get_DataType(&read.dataType),
              "IBluetoothLEAdvertisementDataSection::get_DataType");
        ComPtr<abi::IBuffer> data;
        Check(section->get_Data(data.GetAddressOf()),
              "IBluetoothLEAdvertisementDataSection::get_Data");
        char what[48];
        std::snprintf(what, sizeof what, "data section of type 0x%02X", read.dataType);
        if (ReadBuffer(data.Get(), what, kMaxSectionBytes, read.data)) {
            sections.push_back(std::move(read));
        }
    }
    return sections;
}

platform::BleAdvertisementReceived ReadReceived(ReceivedArgs& args) {
    platform::BleAdvertisementReceived received;
    Check(args.get_RawSignalStrengthInDBm(&received.rawSignalStrengthInDBm),
          "IBluetoothLEAdvertisementReceivedEventArgs::get_RawSignalStrengthInDBm");
    Check(args.get_BluetoothAddress(&received.bluetoothAddress),
          "IBluetoothLEAdvertisementReceivedEventArgs::get_BluetoothAddress");
    received.bluetoothAddress &= kAddressMask;
    int32_t type = 0;
    Check(args.get_AdvertisementType(&type),
          "IBluetoothLEAdvertisementReceivedEventArgs::get_AdvertisementType");
    received.advertisementType = static_cast<platform::BleAdvertisementType>(type);
    Check(args.get_Timestamp(&received.timestamp),
          "IBluetoothLEAdvertisementReceivedEventArgs::get_Timestamp");
    auto advertisement = Fetch<abi::IBluetoothLEAdvertisement>(
        [&](abi::IBluetoothLEAdvertisement** value) { return args.get_Advertisement(value); },
        "IBluetoothLEAdvertisementReceivedEventArgs::get_Advertisement");
    received.manufacturerData = ReadManufacturerData(*advertisement.Get());
    received.dataSections = ReadSections(*advertisement.Get());
    return received;
}

ComPtr<abi::IInt16Reference> BoxInt16(RuntimeActivation& runtime, int16_t value) {
    auto statics = Factory<abi::IPropertyValueStatics>(runtime, abi::kPropertyValueClass,
                                                       "RoGetActivationFactory(PropertyValue)");
    auto boxed = Fetch<IInspectable>(
        [&](IInspectable** result) { return statics->CreateInt16(value, result); },
        "IPropertyValueStatics::CreateInt16");
    auto reference = Query<abi::IInt16Reference>(boxed.Get());
    if (!reference) {
        throw platform::PlatformError(E_NOINTERFACE,
                                      "IPropertyValueStatics::CreateInt16 answered no "
                                      "IReference<Int16>");
    }
    return reference;
}

}  // namespace

WinRtAdvertisementWatcher::~WinRtAdvertisementWatcher() {
    receivedHandlers_.RemoveAll(
        [this](abi::Token token) { return watcher_->remove_Received(token); },
        "IBluetoothLEAdvertisementWatcher::remove_Received");
    stoppedHandlers_.RemoveAll([this](abi::Token token) { return watcher_->remove_Stopped(token); },
                               "IBluetoothLEAdvertisementWatcher::remove_Stopped");
}

platform::BleWatcherStatus WinRtAdvertisementWatcher::Status() {
    int32_t status = 0;
    Check(watcher_->get_Status(&status), "IBluetoothLEAdvertisementWatcher::get_Status");
    return static_cast<platform::BleWatcherStatus>(status);
}

platform::BleScanningMode WinRtAdvertisementWatcher::ScanningMode() {
    int32_t mode = 0;
    Check(watcher_->get_ScanningMode(&mode), "IBluetoothLEAdvertisementWatcher::get_ScanningMode");
    return static_cast<platform::BleScanningMode>(mode);
}

void WinRtAdvertisementWatcher::SetScanningMode(platform::BleScanningMode mode) {
    Check(watcher_->put_ScanningMode(static_cast<int32_t>(mode)),
          "IBluetoothLEAdvertisementWatcher::put_ScanningMode");
}

void WinRtAdvertisementWatcher::SetInRangeThreshold(std::optional<int16_t> dBm) {
    auto filter = Fetch<abi::IBluetoothSignalStrengthFilter>(
        [this](abi::IBluetoothSignalStrengthFilter** value) {
            return watcher_->get_SignalStrengthFilter(value);
        },
        "IBluetoothLEAdvertisementWatcher::get_SignalStrengthFilter");
    ComPtr<abi::IInt16Reference> threshold;
    if (dBm) {
        threshold = BoxInt16(*runtime_, *dBm);
    }
    Check(filter->put_InRangeThresholdInDBm(threshold.Get()),
          "IBluetoothSignalStrengthFilter::put_InRangeThresholdInDBm");
}

void WinRtAdvertisementWatcher::SetBytePatterns(
    const std::vector<platform::BleBytePattern>& patterns) {
    auto filter = Fetch<abi::IBluetoothLEAdvertisementFilter>(
        [this](abi::IBluetoothLEAdvertisementFilter** value) {
            return watcher_->get_AdvertisementFilter(value);
        },
        "IBluetoothLEAdvertisementWatcher::get_AdvertisementFilter");
    auto list = Fetch<abi::IBytePatternVector>(
        [&](abi::IBytePatternVector** value) { return filter->get_BytePatterns(value); },
        "IBluetoothLEAdvertisementFilter::get_BytePatterns");
    std::vector<ComPtr<abi::IBluetoothLEAdvertisementBytePattern>> made;
    if (!patterns.empty()) {
        auto factory = Factory<abi::IBluetoothLEAdvertisementBytePatternFactory>(
            *runtime_, abi::kBytePatternClass,
            "RoGetActivationFactory(BluetoothLEAdvertisementBytePattern)");
        for (const auto& pattern : patterns) {
            auto data = NewBuffer(*runtime_, pattern.data);
            made.push_back(Fetch<abi::IBluetoothLEAdvertisementBytePattern>(
                [&](abi::IBluetoothLEAdvertisementBytePattern** value) {
                    return factory->Create(pattern.dataType, pattern.offset, data.Get(), value);
                },
                "IBluetoothLEAdvertisementBytePatternFactory::Create"));
        }
    }
    Check(list->Clear(), "IVector<BluetoothLEAdvertisementBytePattern>::Clear");
    for (const auto& pattern : made) {
        Check(list->Append(pattern.Get()), "IVector<BluetoothLEAdvertisementBytePattern>::Append");
    }
}

void WinRtAdvertisementWatcher::Start() {
    Check(watcher_->Start(), "IBluetoothLEAdvertisementWatcher::Start");
}

void WinRtAdvertisementWatcher::Stop() {
    Check(watcher_->Stop(), "IBluetoothLEAdvertisementWatcher::Stop");
}

platform::EventToken WinRtAdvertisementWatcher::AddReceived(ReceivedHandler handler) {
    auto entry = receivedHandlers_.Prepare(std::move(handler));
    auto handlerObject =
        NewDelegate<abi::IAdvertisementReceivedHandler, abi::IBluetoothLEAdvertisementWatcher*,
                    ReceivedArgs*>([self = weak_from_this(), entry](
                                       abi::IBluetoothLEAdvertisementWatcher*, ReceivedArgs* args) {
            auto watcher = self.lock();
            if (!watcher || !entry->active || !args) {
                return S_OK;
            }
            platform::BleAdvertisementReceived received;
            try {
                received = ReadReceived(*args);
            } catch (const std::exception& error) {
                LogErrorFun("[WinRT] Received: the advertisement cannot be read, dropped: %s",
                            error.what());
                return S_OK;
            }
            entry->handler(*watcher, received);
            return S_OK;
        });
    abi::Token token = 0;
    Check(watcher_->add_Received(handlerObject.Get(), &token),
          "IBluetoothLEAdvertisementWatcher::add_Received");
    receivedHandlers_.Added(token, std::move(entry));
    return token;
}

void WinRtAdvertisementWatcher::RemoveReceived(platform::EventToken token) {
    if (receivedHandlers_.Remove(token)) {
        Check(watcher_->remove_Received(token),
              "IBluetoothLEAdvertisementWatcher::remove_Received");
    }
}

platform::EventToken WinRtAdvertisementWatcher::AddStopped(StoppedHandler handler) {
    auto entry = stoppedHandlers_.Prepare(std::move(handler));
    auto handlerObject =
        NewDelegate<abi::IWatcherStoppedHandler, abi::IBluetoothLEAdvertisementWatcher*,
                    StoppedArgs*>([self = weak_from_this(), entry](
                                      abi::IBluetoothLEAdvertisementWatcher*, StoppedArgs* args) {
            auto watcher = self.lock();
            if (!watcher || !entry->active || !args) {
                return S_OK;
            }
            int32_t error = 0;
            HRESULT result = args->get_Error(&error);
            if (FAILED(result)) {
                LogErrorFun(
                    "[WinRT] Stopped: reading the error failed, hresult 0x%08lx; "
                    "reported as OtherError",
                    static_cast<unsigned long>(result));
                error = static_cast<int32_t>(platform::BluetoothError::OtherError);
            }
            entry->handler(*watcher, static_cast<platform::BluetoothError>(error));
            return S_OK;
        });
    abi::Token token = 0;
    Check(watcher_->add_Stopped(handlerObject.Get(), &token),
          "IBluetoothLEAdvertisementWatcher::add_Stopped");
    stoppedHandlers_.Added(token, std::move(entry));
    return token;
}

void WinRtAdvertisementWatcher::RemoveStopped(platform::EventToken token) {
    if (stoppedHandlers_.Remove(token)) {
        Check(watcher_->remove_Stopped(token), "IBluetoothLEAdvertisementWatcher::remove_Stopped");
    }
}

}  // namespace connectkit::win
