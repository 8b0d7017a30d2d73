#include "bluetooth/FakeWatcher.h"

#include <algorithm>
#include <string>

namespace connectkit::test {
namespace {

using BytePattern = IBluetoothLEAdvertisementBytePattern;
constexpr HRESULT kBounds = static_cast<HRESULT>(0x8000000B);  // E_BOUNDS

class FakeBuffer final : public Fake<IBuffer, IBufferByteAccess> {
public:
    FakeBuffer(std::shared_ptr<FakeWorld> world, std::vector<uint8_t> bytes, uint32_t length)
        : Fake(std::move(world)), bytes_(std::move(bytes)), length_(length) {}

    HRESULT STDMETHODCALLTYPE get_Capacity(uint32_t* value) override {
        return Put("IBuffer::get_Capacity", *value, static_cast<uint32_t>(bytes_.size()));
    }
    HRESULT STDMETHODCALLTYPE get_Length(uint32_t* value) override {
        return Put("IBuffer::get_Length", *value, length_);
    }
    HRESULT STDMETHODCALLTYPE put_Length(uint32_t value) override {
        return value > bytes_.size() ? E_INVALIDARG : Put("IBuffer::put_Length", length_, value);
    }
    HRESULT STDMETHODCALLTYPE Buffer(uint8_t** value) override {
        *value = bytes_.data();
        return S_OK;
    }
    std::vector<uint8_t> Bytes() const {
        return {bytes_.begin(), bytes_.begin() + std::min<size_t>(length_, bytes_.size())};
    }

private:
    std::vector<uint8_t> bytes_;
    uint32_t length_;
};

// One manufacturer entry or one data section: `id` is the company or type.
class FakeEntry final
    : public Fake<IBluetoothLEManufacturerData, IBluetoothLEAdvertisementDataSection> {
public:
    FakeEntry(std::shared_ptr<FakeWorld> world, bool section, uint16_t id, const FakeBytes& data)
        : Fake(world), section_(section), id_(id) {
        if (!data.missing) {
            buffer_ = Make<FakeBuffer>(world, data.bytes,
                                       static_cast<uint32_t>(data.bytes.size()) + data.overrun);
        }
    }

    HRESULT STDMETHODCALLTYPE get_CompanyId(uint16_t* value) override {
        return Put("IBluetoothLEManufacturerData::get_CompanyId", *value, id_);
    }
    HRESULT STDMETHODCALLTYPE get_DataType(uint8_t* value) override {
        return Put("IBluetoothLEAdvertisementDataSection::get_DataType", *value,
                   static_cast<uint8_t>(id_));
    }
    CK_UNUSED_PUT(put_CompanyId, uint16_t)
    CK_UNUSED_PUT(put_DataType, uint8_t)
    HRESULT STDMETHODCALLTYPE get_Data(IBuffer** value) override {
        return Hand(section_ ? "IBluetoothLEAdvertisementDataSection::get_Data"
                             : "IBluetoothLEManufacturerData::get_Data",
                    buffer_, value);
    }

private:
    bool section_;
    uint16_t id_;
    ComPtr<FakeBuffer> buffer_;
};

template <typename Vector, typename Item>
class FakeVector final : public Fake<Vector> {
public:
    FakeVector(std::shared_ptr<FakeWorld> world, const std::string& name,
               std::vector<ComPtr<FakeEntry>> items)
        : Fake<Vector>(std::move(world)), name_(name), items_(std::move(items)) {}

    HRESULT STDMETHODCALLTYPE GetAt(uint32_t index, Item** item) override {
        *item = nullptr;
        return index < items_.size() ? this->Hand((name_ + "::GetAt").c_str(), items_[index], item)
                                     : kBounds;
    }
    HRESULT STDMETHODCALLTYPE get_Size(uint32_t* size) override {
        return this->Put((name_ + "::get_Size").c_str(), *size,
                         static_cast<uint32_t>(items_.size()));
    }

private:
    std::string name_;
    std::vector<ComPtr<FakeEntry>> items_;
};

using ManufacturerVector = FakeVector<IManufacturerDataVector, IBluetoothLEManufacturerData>;
using SectionVector = FakeVector<IDataSectionVector, IBluetoothLEAdvertisementDataSection>;

// The event's arguments and their advertisement in one object.
class FakeReceived final
    : public Fake<IBluetoothLEAdvertisementReceivedEventArgs, IBluetoothLEAdvertisement> {
public:
    FakeReceived(const std::shared_ptr<FakeWorld>& world, FakeAdvertisement advertisement)
        : Fake(world), advertisement_(std::move(advertisement)) {
        std::vector<ComPtr<FakeEntry>> entries;
        for (const auto& [company, data] : advertisement_.manufacturer) {
            entries.push_back(Make<FakeEntry>(world, false, company, data));
        }
        manufacturer_ = Make<ManufacturerVector>(world, "IVector<BluetoothLEManufacturerData>",
                                                 std::move(entries));
        entries.clear();
        for (const auto& [type, data] : advertisement_.sections) {
            entries.push_back(Make<FakeEntry>(world, true, type, data));
        }
        sections_ = Make<SectionVector>(world, "IVector<BluetoothLEAdvertisementDataSection>",
                                        std::move(entries));
    }

    HRESULT STDMETHODCALLTYPE get_RawSignalStrengthInDBm(int16_t* value) override {
        return Put("IBluetoothLEAdvertisementReceivedEventArgs::get_RawSignalStrengthInDBm", *value,
                   advertisement_.rssi);
    }
    HRESULT STDMETHODCALLTYPE get_BluetoothAddress(uint64_t* value) override {
        return Put("IBluetoothLEAdvertisementReceivedEventArgs::get_BluetoothAddress", *value,
                   advertisement_.address);
    }
    HRESULT STDMETHODCALLTYPE get_AdvertisementType(int32_t* value) override {
        return Put("IBluetoothLEAdvertisementReceivedEventArgs::get_AdvertisementType", *value,
                   advertisement_.type);
    }
    HRESULT STDMETHODCALLTYPE get_Timestamp(int64_t* value) override {
        return Put("IBluetoothLEAdvertisementReceivedEventArgs::get_Timestamp", *value,
                   advertisement_.timestamp);
    }
    HRESULT STDMETHODCALLTYPE get_Advertisement(IBluetoothLEAdvertisement** value) override {
        return Hand("IBluetoothLEAdvertisementReceivedEventArgs::get_Advertisement",
                    ComPtr<IBluetoothLEAdvertisement>(this), value);
    }

    CK_UNUSED_GET(get_Flags, IInspectable*)
    CK_UNUSED_PUT(put_Flags, IInspectable*)
    CK_UNUSED_GET(get_LocalName, HSTRING)
    CK_UNUSED_PUT(put_LocalName, HSTRING)
    CK_UNUSED_GET(get_ServiceUuids, IInspectable*)
    HRESULT STDMETHODCALLTYPE get_ManufacturerData(IManufacturerDataVector** value) override {
        return Hand("IBluetoothLEAdvertisement::get_ManufacturerData", manufacturer_, value);
    }
    HRESULT STDMETHODCALLTYPE get_DataSections(IDataSectionVector** value) override {
        return Hand("IBluetoothLEAdvertisement::get_DataSections", sections_, value);
    }

private:
    FakeAdvertisement advertisement_;
    ComPtr<ManufacturerVector> manufacturer_;
    ComPtr<SectionVector> sections_;
};

class FakeStopped final : public Fake<IBluetoothLEAdvertisementWatcherStoppedEventArgs> {
public:
    FakeStopped(std::shared_ptr<FakeWorld> world, int32_t error)
        : Fake(std::move(world)), error_(error) {}
    HRESULT STDMETHODCALLTYPE get_Error(int32_t* value) override {
        return Put("IBluetoothLEAdvertisementWatcherStoppedEventArgs::get_Error", *value, error_);
    }

private:
    int32_t error_;
};

class FakeInt16 final : public Fake<IInt16Reference> {
public:
    FakeInt16(std::shared_ptr<FakeWorld> world, int16_t value)
        : Fake(std::move(world)), value_(value) {}
    HRESULT STDMETHODCALLTYPE get_Value(int16_t* value) override {
        *value = value_;
        return S_OK;
    }

private:
    int16_t value_;
};

class FakePattern final : public Fake<BytePattern> {
public:
    FakePattern(std::shared_ptr<FakeWorld> world, uint8_t type, int16_t offset,
                std::vector<uint8_t> bytes)
        : Fake(std::move(world)), value{type, offset, std::move(bytes)} {}
    const std::tuple<uint8_t, int16_t, std::vector<uint8_t>> value;
};

// The statics and factories of PropertyValue, Buffer and BytePattern.
class FakeFactories final : public Fake<IPropertyValueStatics, IBufferFactory,
                                        IBluetoothLEAdvertisementBytePatternFactory> {
public:
    using Fake::Fake;

    CK_UNUSED_GET(CreateEmpty, IInspectable*)
    HRESULT STDMETHODCALLTYPE CreateUInt8(uint8_t, IInspectable** result) override {
        return Unused(result);
    }
    HRESULT STDMETHODCALLTYPE CreateInt16(int16_t value, IInspectable** result) override {
        return Hand("IPropertyValueStatics::CreateInt16",
                    Inspectable(Make<FakeInt16>(world_, value)), result);
    }
    HRESULT STDMETHODCALLTYPE Create(uint32_t capacity, IBuffer** value) override {
        return Hand("IBufferFactory::Create",
                    Make<FakeBuffer>(world_, std::vector<uint8_t>(capacity), 0), value);
    }
    HRESULT STDMETHODCALLTYPE Create(uint8_t type, int16_t offset, IBuffer* data,
                                     BytePattern** value) override {
        auto bytes = static_cast<FakeBuffer*>(data)->Bytes();
        return Hand("IBluetoothLEAdvertisementBytePatternFactory::Create",
                    Make<FakePattern>(world_, type, offset, std::move(bytes)), value);
    }
};

}  // namespace

// The watcher, its signal-strength and advertisement filters and the
// filter's pattern list in one object.
class FakeWatcher final
    : public Fake<IBluetoothLEAdvertisementWatcher, IBluetoothSignalStrengthFilter,
                  IBluetoothLEAdvertisementFilter, IBytePatternVector> {
public:
    using Fake::Fake;

    CK_UNUSED_GET(get_MinSamplingInterval, int64_t)
    CK_UNUSED_GET(get_MaxSamplingInterval, int64_t)
    CK_UNUSED_GET(get_MinOutOfRangeTimeout, int64_t)
    CK_UNUSED_GET(get_MaxOutOfRangeTimeout, int64_t)
    HRESULT STDMETHODCALLTYPE get_Status(int32_t* value) override {
        return Put("IBluetoothLEAdvertisementWatcher::get_Status", *value, status_.load());
    }
    HRESULT STDMETHODCALLTYPE get_ScanningMode(int32_t* value) override {
        return Put("IBluetoothLEAdvertisementWatcher::get_ScanningMode", *value, mode_.load());
    }
    HRESULT STDMETHODCALLTYPE put_ScanningMode(int32_t value) override {
        return Put("IBluetoothLEAdvertisementWatcher::put_ScanningMode", mode_, value);
    }
    HRESULT STDMETHODCALLTYPE
    get_SignalStrengthFilter(IBluetoothSignalStrengthFilter** value) override {
        return Hand("IBluetoothLEAdvertisementWatcher::get_SignalStrengthFilter",
                    ComPtr<IBluetoothSignalStrengthFilter>(this), value);
    }
    CK_UNUSED_PUT(put_SignalStrengthFilter, IBluetoothSignalStrengthFilter*)
    HRESULT STDMETHODCALLTYPE
    get_AdvertisementFilter(IBluetoothLEAdvertisementFilter** value) override {
        return Hand("IBluetoothLEAdvertisementWatcher::get_AdvertisementFilter",
                    ComPtr<IBluetoothLEAdvertisementFilter>(this), value);
    }
    CK_UNUSED_PUT(put_AdvertisementFilter, IBluetoothLEAdvertisementFilter*)
    HRESULT STDMETHODCALLTYPE Start() override {
        if (HRESULT fault = Fault("IBluetoothLEAdvertisementWatcher::Start")) {
            return fault;
        }
        std::unique_lock<std::mutex> lock(world_->mutex);
        bool abort = world_->abortStarts;
        int32_t error = world_->abortError;
        lock.unlock();
        status_ = abort ? 4 : 1;
        if (abort) {
            RaiseStopped(error);
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Stop() override {
        if (HRESULT fault = Fault("IBluetoothLEAdvertisementWatcher::Stop")) {
            return fault;
        }
        int32_t started = 1;
        if (status_.compare_exchange_strong(started, 3)) {
            RaiseStopped(0);
        }
        return S_OK;
    }
    CK_FAKE_EVENT(Received, IAdvertisementReceivedHandler, received_)
    CK_FAKE_EVENT(Stopped, IWatcherStoppedHandler, stopped_)

    CK_UNUSED_GET(get_InRangeThresholdInDBm, IInt16Reference*)
    HRESULT STDMETHODCALLTYPE put_InRangeThresholdInDBm(IInt16Reference* value) override {
        std::optional<int16_t> threshold;
        if (value) {
            threshold.emplace();
            value->get_Value(&*threshold);
        }
        std::lock_guard<std::mutex> lock(mutex_);
        return Put("IBluetoothSignalStrengthFilter::put_InRangeThresholdInDBm", filters_.inRange,
                   threshold);
    }

    CK_UNUSED_GET(get_Advertisement, IBluetoothLEAdvertisement*)
    CK_UNUSED_PUT(put_Advertisement, IBluetoothLEAdvertisement*)
    HRESULT STDMETHODCALLTYPE get_BytePatterns(IBytePatternVector** value) override {
        return Hand("IBluetoothLEAdvertisementFilter::get_BytePatterns",
                    ComPtr<IBytePatternVector>(this), value);
    }

    HRESULT STDMETHODCALLTYPE GetAt(uint32_t, BytePattern** item) override { return Unused(item); }
    CK_UNUSED_GET(get_Size, uint32_t)
    CK_UNUSED_GET(GetView, IInspectable*)
    HRESULT STDMETHODCALLTYPE IndexOf(BytePattern*, uint32_t* index, Boolean* found) override {
        *found = 0;
        return Unused(index);
    }
    HRESULT STDMETHODCALLTYPE SetAt(uint32_t, BytePattern*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InsertAt(uint32_t, BytePattern*) override { return E_NOTIMPL; }
    CK_UNUSED_PUT(RemoveAt, uint32_t)
    HRESULT STDMETHODCALLTYPE Append(BytePattern* value) override {
        if (HRESULT fault = Fault("IVector<BluetoothLEAdvertisementBytePattern>::Append")) {
            return fault;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        filters_.patterns.push_back(static_cast<FakePattern*>(value)->value);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE RemoveAtEnd() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clear() override {
        if (HRESULT fault = Fault("IVector<BluetoothLEAdvertisementBytePattern>::Clear")) {
            return fault;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        filters_.patterns.clear();
        return S_OK;
    }

    bool Advertise(const FakeAdvertisement& advertisement) {
        return status_ == 1 &&
               received_.Raise(ComPtr<FakeWatcher>(this), [world = world_, advertisement] {
                   return Make<FakeReceived>(world, advertisement);
               });
    }
    bool RadioOff() {
        int32_t started = 1;
        return status_.compare_exchange_strong(started, 4) && RaiseStopped(1);
    }
    FakeFilters Filters() {
        std::lock_guard<std::mutex> lock(mutex_);
        return filters_;
    }

private:
    bool RaiseStopped(int32_t error) {
        return stopped_.Raise(ComPtr<FakeWatcher>(this),
                              [world = world_, error] { return Make<FakeStopped>(world, error); });
    }

    std::atomic<int32_t> status_{0};
    std::atomic<int32_t> mode_{0};
    std::mutex mutex_;
    FakeFilters filters_;
    Event<IAdvertisementReceivedHandler> received_{world_, "IBluetoothLEAdvertisementWatcher",
                                                   "Received"};
    Event<IWatcherStoppedHandler> stopped_{world_, "IBluetoothLEAdvertisementWatcher", "Stopped"};
};

FakeBleRuntime::FakeBleRuntime() {
    auto world = fakes.shared();
    for (const wchar_t* name : {kPropertyValueClass, kBufferClass, kBytePatternClass}) {
        fakes.Provide(name, [world] { return Inspectable(Make<FakeFactories>(world)); });
    }
}

FakeBleRuntime::~FakeBleRuntime() {
    Drop();
}

HRESULT FakeBleRuntime::ActivateInstance(const wchar_t* classId, IInspectable** instance) {
    std::wstring name(classId);
    if (name != kAdvertisementWatcherClass) {
        return fakes.ActivateInstance(classId, instance);
    }
    *instance = nullptr;
    if (HRESULT fault =
            fakes.shared()->Fault("activate:" + std::string(name.begin(), name.end()))) {
        return fault;
    }
    auto watcher = Make<FakeWatcher>(fakes.shared());
    std::lock_guard<std::mutex> lock(mutex_);
    newest_ = watcher;
    *instance = Inspectable(watcher).Detach();
    return S_OK;
}

bool FakeBleRuntime::Advertise(const FakeAdvertisement& advertisement) {
    std::lock_guard<std::mutex> lock(mutex_);
    return newest_ && newest_->Advertise(advertisement);
}

bool FakeBleRuntime::RadioOff() {
    std::lock_guard<std::mutex> lock(mutex_);
    return newest_ && newest_->RadioOff();
}

FakeFilters FakeBleRuntime::Filters() {
    std::lock_guard<std::mutex> lock(mutex_);
    return newest_ ? newest_->Filters() : FakeFilters{};
}

void FakeBleRuntime::Drop() {
    std::lock_guard<std::mutex> lock(mutex_);
    newest_.Reset();
}

}  // namespace connectkit::test
