#include "bluetooth/FakeWatcher.h"

#include <algorithm>
#include <string>

namespace connectkit::test {
namespace {

using BytePattern = IBluetoothLEAdvertisementBytePattern;

class FakeBuffer final : public Fake<IBuffer, IBufferByteAccess> {
public:
    FakeBuffer(std::shared_ptr<FakeWorld> world, std::vector<uint8_t> bytes, uint32_t length)
        : Fake(std::move(world)), bytes_(std::move(bytes)), length_(length) {}

    CK_FAKE_GET(IBuffer, get_Capacity, uint32_t, static_cast<uint32_t>(bytes_.size()))
    CK_FAKE_GET(IBuffer, get_Length, uint32_t, length_)
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

    CK_FAKE_GET(IBluetoothLEManufacturerData, get_CompanyId, uint16_t, id_)
    CK_FAKE_GET(IBluetoothLEAdvertisementDataSection, get_DataType, uint8_t,
                static_cast<uint8_t>(id_))
    CK_UNUSED_PUT(put_CompanyId, uint16_t)
    CK_UNUSED_PUT(put_DataType, uint8_t)
    HRESULT STDMETHODCALLTYPE get_Data(IBuffer** value) override {
        return Answer(section_ ? "IBluetoothLEAdvertisementDataSection::get_Data"
                               : "IBluetoothLEManufacturerData::get_Data",
                      value, buffer_);
    }

private:
    bool section_;
    uint16_t id_;
    ComPtr<FakeBuffer> buffer_;
};

using ManufacturerVector =
    FakeView<IManufacturerDataVector, IBluetoothLEManufacturerData, FakeEntry>;
using SectionVector = FakeView<IDataSectionVector, IBluetoothLEAdvertisementDataSection, FakeEntry>;

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

    CK_FAKE_GET(IBluetoothLEAdvertisementReceivedEventArgs, get_RawSignalStrengthInDBm, int16_t,
                advertisement_.rssi)
    CK_FAKE_GET(IBluetoothLEAdvertisementReceivedEventArgs, get_BluetoothAddress, uint64_t,
                advertisement_.address)
    CK_FAKE_GET(IBluetoothLEAdvertisementReceivedEventArgs, get_AdvertisementType, int32_t,
                advertisement_.type)
    CK_FAKE_GET(IBluetoothLEAdvertisementReceivedEventArgs, get_Timestamp, int64_t,
                advertisement_.timestamp)
    CK_FAKE_GET(IBluetoothLEAdvertisementReceivedEventArgs, get_Advertisement,
                IBluetoothLEAdvertisement*, ComPtr<IBluetoothLEAdvertisement>(this))

    CK_UNUSED_GET(get_Flags, IInspectable*)
    CK_UNUSED_PUT(put_Flags, IInspectable*)
    CK_UNUSED_GET(get_LocalName, HSTRING)
    CK_UNUSED_PUT(put_LocalName, HSTRING)
    CK_UNUSED_GET(get_ServiceUuids, IInspectable*)
    CK_FAKE_GET(IBluetoothLEAdvertisement, get_ManufacturerData, IManufacturerDataVector*,
                manufacturer_)
    CK_FAKE_GET(IBluetoothLEAdvertisement, get_DataSections, IDataSectionVector*, sections_)

private:
    FakeAdvertisement advertisement_;
    ComPtr<ManufacturerVector> manufacturer_;
    ComPtr<SectionVector> sections_;
};

class FakeStopped final : public Fake<IBluetoothLEAdvertisementWatcherStoppedEventArgs> {
public:
    FakeStopped(std::shared_ptr<FakeWorld> world, int32_t error)
        : Fake(std::move(world)), error_(error) {}
    CK_FAKE_GET(IBluetoothLEAdvertisementWatcherStoppedEventArgs, get_Error, int32_t, error_)

private:
    int32_t error_;
};

class FakeInt16 final : public Fake<IInt16Reference> {
public:
    FakeInt16(std::shared_ptr<FakeWorld> world, int16_t value)
        : Fake(std::move(world)), value_(value) {}
    CK_FAKE_GET(IInt16Reference, get_Value, int16_t, value_)

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
        return Answer("IPropertyValueStatics::CreateInt16", result,
                      Inspectable(Make<FakeInt16>(world_, value)));
    }
    HRESULT STDMETHODCALLTYPE Create(uint32_t capacity, IBuffer** value) override {
        return Answer("IBufferFactory::Create", value,
                      Make<FakeBuffer>(world_, std::vector<uint8_t>(capacity), 0));
    }
    HRESULT STDMETHODCALLTYPE Create(uint8_t type, int16_t offset, IBuffer* data,
                                     BytePattern** value) override {
        auto bytes = static_cast<FakeBuffer*>(data)->Bytes();
        return Answer("IBluetoothLEAdvertisementBytePatternFactory::Create", value,
                      Make<FakePattern>(world_, type, offset, std::move(bytes)));
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
    CK_FAKE_GET(IBluetoothLEAdvertisementWatcher, get_Status, int32_t, status_.load())
    CK_FAKE_GET(IBluetoothLEAdvertisementWatcher, get_ScanningMode, int32_t, mode_.load())
    CK_FAKE_PUT(IBluetoothLEAdvertisementWatcher, put_ScanningMode, int32_t, mode_)
    CK_FAKE_GET(IBluetoothLEAdvertisementWatcher, get_SignalStrengthFilter,
                IBluetoothSignalStrengthFilter*, ComPtr<IBluetoothSignalStrengthFilter>(this))
    CK_UNUSED_PUT(put_SignalStrengthFilter, IBluetoothSignalStrengthFilter*)
    CK_FAKE_GET(IBluetoothLEAdvertisementWatcher, get_AdvertisementFilter,
                IBluetoothLEAdvertisementFilter*, ComPtr<IBluetoothLEAdvertisementFilter>(this))
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
    CK_FAKE_GET(IBluetoothLEAdvertisementFilter, get_BytePatterns, IBytePatternVector*,
                ComPtr<IBytePatternVector>(this))

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

struct FakeWatchers::State {
    std::mutex mutex;
    ComPtr<FakeWatcher> newest;
};

FakeWatchers::FakeWatchers(FakeRuntime& runtime) : state_(std::make_shared<State>()) {
    auto world = runtime.shared();
    for (const wchar_t* name : {kPropertyValueClass, kBufferClass, kBytePatternClass}) {
        runtime.Provide(name, [world] { return Inspectable(Make<FakeFactories>(world)); });
    }
    runtime.Provide(kAdvertisementWatcherClass, [world, state = state_] {
        auto watcher = Make<FakeWatcher>(world);
        std::lock_guard<std::mutex> lock(state->mutex);
        state->newest = watcher;
        return Inspectable(watcher);
    });
}

bool FakeWatchers::Advertise(const FakeAdvertisement& advertisement) {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->newest && state_->newest->Advertise(advertisement);
}

bool FakeWatchers::RadioOff() {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->newest && state_->newest->RadioOff();
}

FakeFilters FakeWatchers::Filters() {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->newest ? state_->newest->Filters() : FakeFilters{};
}

void FakeWatchers::Drop() {
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->newest.Reset();
}

}  // namespace connectkit::test
