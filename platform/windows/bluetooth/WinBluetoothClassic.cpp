#include "platform/windows/bluetooth/WinBluetoothClassic.h"

#include <cwchar>
#include <utility>

#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {
namespace {

// The sizes the system library checks in dwSize.
static_assert(sizeof(BLUETOOTH_RADIO_INFO) == 520);
static_assert(sizeof(BLUETOOTH_DEVICE_SEARCH_PARAMS) == 40);
static_assert(sizeof(BLUETOOTH_DEVICE_INFO) == 560);

constexpr uint64_t kAddressMask = 0xFFFFFFFFFFFFull;

// Radio handles, radio searches and device searches each close through an
// entry of the table; all three take one pointer-sized handle.
struct CloseThrough {
    decltype(&::CloseHandle) close = nullptr;
    void operator()(HANDLE handle) const { close(handle); }
};
using EntryHandle = UniqueHandle<HANDLE, CloseThrough>;

// The name a structure of the system library carries, read no further than
// its array: a name filling it has no terminator.
template <size_t kLength>
std::wstring BoundedName(const WCHAR (&name)[kLength]) {
    return std::wstring(name, wcsnlen(name, kLength));
}

class WinBluetoothRadio final : public platform::BluetoothRadio {
public:
    WinBluetoothRadio(std::shared_ptr<const BluetoothEntries> entries, HANDLE handle)
        : entries_(std::move(entries)), handle_(handle, {entries_->closeHandle}) {}

    uint32_t Info(platform::BluetoothRadioInfo& info) override {
        info = platform::BluetoothRadioInfo{};
        BLUETOOTH_RADIO_INFO radio{};
        radio.dwSize = sizeof(radio);
        DWORD result = entries_->getRadioInfo(handle_.Get(), &radio);
        if (result != ERROR_SUCCESS) {
            return result;
        }
        info.address = radio.address.ullLong & kAddressMask;
        info.name = BoundedName(radio.szName);
        info.classOfDevice = radio.ulClassofDevice;
        info.lmpSubversion = radio.lmpSubversion;
        info.manufacturer = radio.manufacturer;
        return ERROR_SUCCESS;
    }

    uint32_t Control(uint32_t code, const std::vector<uint8_t>& input, std::vector<uint8_t>& output,
                     uint32_t outputSize) override {
        output.assign(outputSize, 0);
        DWORD returned = 0;
        if (!entries_->deviceIoControl(
                handle_.Get(), code, input.empty() ? nullptr : const_cast<uint8_t*>(input.data()),
                static_cast<DWORD>(input.size()), output.empty() ? nullptr : output.data(),
                outputSize, &returned, nullptr)) {
            DWORD error = GetLastError();
            output.clear();
            return error;
        }
        // A driver's count is believed no further than the buffer it got.
        output.resize(returned < outputSize ? returned : outputSize);
        return ERROR_SUCCESS;
    }

private:
    std::shared_ptr<const BluetoothEntries> entries_;
    EntryHandle handle_;
};

class WinBluetoothRadioSearch final : public platform::BluetoothRadioSearch {
public:
    WinBluetoothRadioSearch(std::shared_ptr<const BluetoothEntries> entries,
                            HBLUETOOTH_RADIO_FIND search)
        : entries_(std::move(entries)), search_(search, {entries_->findRadioClose}) {}

    std::unique_ptr<platform::BluetoothRadio> Next(uint32_t& error) override {
        HANDLE radio = nullptr;
        if (!entries_->findNextRadio(search_.Get(), &radio)) {
            error = GetLastError();
            return nullptr;
        }
        if (!radio) {
            error = ERROR_INVALID_HANDLE;
            return nullptr;
        }
        error = ERROR_SUCCESS;
        return std::make_unique<WinBluetoothRadio>(entries_, radio);
    }

private:
    std::shared_ptr<const BluetoothEntries> entries_;
    EntryHandle search_;
};

}  // namespace

std::shared_ptr<const BluetoothEntries> WinBluetoothClassic::Entries(uint32_t& error) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!entries_) {
        entries_ = LoadBluetoothEntries(libraries_, error);
    }
    return entries_;
}

std::unique_ptr<platform::BluetoothRadioSearch> WinBluetoothClassic::FindFirstRadio(
    std::unique_ptr<platform::BluetoothRadio>& first, uint32_t& error) {
    first.reset();
    auto entries = Entries(error);
    if (!entries) {
        return nullptr;
    }
    BLUETOOTH_FIND_RADIO_PARAMS parameters{};
    parameters.dwSize = sizeof(parameters);
    HANDLE radio = nullptr;
    EntryHandle search(entries->findFirstRadio(&parameters, &radio), {entries->findRadioClose});
    DWORD searchError = search ? ERROR_SUCCESS : GetLastError();
    EntryHandle radioHandle(radio, {entries->closeHandle});
    if (!search) {
        error = searchError;
        return nullptr;
    }
    if (!radioHandle) {
        error = ERROR_INVALID_HANDLE;
        return nullptr;
    }
    error = ERROR_SUCCESS;
    first = std::make_unique<WinBluetoothRadio>(entries, radioHandle.Release());
    return std::make_unique<WinBluetoothRadioSearch>(entries, search.Release());
}

uint32_t WinBluetoothClassic::FindFirstDevice(const platform::BluetoothDeviceSearch& search,
                                              platform::BluetoothDeviceInfo& first) {
    first = platform::BluetoothDeviceInfo{};
    uint32_t error = ERROR_SUCCESS;
    auto entries = Entries(error);
    if (!entries) {
        return error;
    }
    BLUETOOTH_DEVICE_SEARCH_PARAMS parameters{};
    parameters.dwSize = sizeof(parameters);
    parameters.fReturnAuthenticated = search.returnAuthenticated;
    parameters.fReturnRemembered = search.returnRemembered;
    parameters.fReturnUnknown = search.returnUnknown;
    parameters.fReturnConnected = search.returnConnected;
    parameters.fIssueInquiry = search.issueInquiry;
    parameters.cTimeoutMultiplier = search.timeoutMultiplier;
    BLUETOOTH_DEVICE_INFO device{};
    device.dwSize = sizeof(device);
    EntryHandle found(entries->findFirstDevice(&parameters, &device), {entries->findDeviceClose});
    if (!found) {
        return GetLastError();
    }
    first.address = device.Address.ullLong & kAddressMask;
    first.name = BoundedName(device.szName);
    first.classOfDevice = device.ulClassofDevice;
    first.connected = device.fConnected != FALSE;
    first.remembered = device.fRemembered != FALSE;
    first.authenticated = device.fAuthenticated != FALSE;
    return ERROR_SUCCESS;
}

}  // namespace connectkit::win
