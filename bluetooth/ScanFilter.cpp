#include "bluetooth/ScanFilter.h"

#include "bluetooth/AdvPayload.h"

namespace connectkit::bluetooth {

namespace {
// The most an advertisement or scan response carries.
constexpr size_t kPayloadReserve = 31;
}  // namespace

ScanVerdict ClassifyAdvertisement(const platform::BleAdvertisementReceived& received,
                                  ScanDelivery& delivery) {
    const platform::BleManufacturerData* manufacturer = nullptr;
    const platform::BleDataSection* service = nullptr;
    size_t count = 0;
    for (const auto& entry : received.manufacturerData) {
        if (entry.companyId == kCompanyId) {
            manufacturer = &entry;
            ++count;
        }
    }
    for (const auto& section : received.dataSections) {
        if (section.dataType == kAdTypeServiceData16) {
            service = &section;
            ++count;
        }
    }
    if (count != 1) {
        return ScanVerdict::NotOurs;
    }
    delivery.payload.clear();
    delivery.payload.reserve(kPayloadReserve);
    if (manufacturer) {
        delivery.payload.assign(manufacturer->data.begin(), manufacturer->data.end());
        delivery.uuid = kServiceUuid;
        return ScanVerdict::Deliver;
    }
    const auto& data = service->data;
    if (data.size() < 2) {
        return ScanVerdict::ShortSection;
    }
    delivery.uuid = static_cast<uint16_t>(data[0] | data[1] << 8);
    if (delivery.uuid != kServiceUuid && delivery.uuid != kBeamletUuid) {
        return ScanVerdict::OtherUuid;
    }
    delivery.payload.assign(data.begin() + 2, data.end());
    return ScanVerdict::Deliver;
}

}  // namespace connectkit::bluetooth
