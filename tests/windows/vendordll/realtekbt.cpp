// Test double of the Realtek Bluetooth library: the simulated library's
// five entries under the real names, sending to a controller model of its
// own, and CkRtkConfigure for the tests.

#include <cstring>
#include <vector>

#include "bthdll/CkHciModel.h"
#include "platform/sim/bluetooth/SimRealtekBluetooth.h"
#include "vendordll/CkRtkControl.h"
#include "vendordll/Guarded.h"

using connectkit::vendordll::Guarded;
namespace rtk = connectkit::platform::rtk;
namespace sim = connectkit::sim;

namespace {

sim::SimHciController& Controller() {
    // Never destroyed, as the library's own state: the loader may call in
    // while the process winds down.
    static auto* controller = new sim::SimHciController();
    return *controller;
}

int Configure(const CkRtkSetup* setup, CkRtkReport* report) {
    if (setup) {
        sim::SimRealtekBluetoothSettings settings;
        const char* entries[] = {rtk::kOpenDevice, rtk::kCloseDevice, rtk::kSetMultiAdvParam,
                                 rtk::kSendAdv, rtk::kCloseAdv};
        for (int entry = 0; entry < 5; ++entry) {
            settings.busy[entries[entry]] = setup->busy[entry];
        }
        Controller().Configure(
            connectkit::bthdll::HciSettings(setup->hciFaults, setup->hciFaultCount));
        sim::ConfigureSimRealtekBluetooth(settings, [](const std::vector<uint8_t>& packet) {
            return Controller().Command(packet).event;
        });
    }
    if (report) {
        *report = CkRtkReport{};
        auto log = sim::RealtekBluetoothLog();
        report->callCount = static_cast<uint32_t>(log.calls.size());
        for (size_t call = 0; call < log.calls.size() && call < 32; ++call) {
            std::strncpy(report->calls[call], log.calls[call].c_str(), 31);
        }
        report->open = log.open;
        connectkit::bthdll::Report(Controller(), report->hciCommands, report->hciEnabled);
    }
    return 0;
}

}  // namespace

extern "C" {

int RtkApplOpenDevice(rtk::Device* device) {
    return Guarded(sim::rtkbt::RtkApplOpenDevice, device);
}

int RtkApplCloseDevice(rtk::Device device) {
    return Guarded(sim::rtkbt::RtkApplCloseDevice, device);
}

int RtkSendHciLeSetMultiAdvParam(rtk::Device device, const rtk::MultiAdvParam* parameters) {
    return Guarded(sim::rtkbt::RtkSendHciLeSetMultiAdvParam, device, parameters);
}

int RtkApplSendAdv(uint8_t instance, const uint8_t* data, uint8_t dataLength,
                   const uint8_t* scanResponse, uint8_t scanResponseLength, rtk::Device device) {
    return Guarded(sim::rtkbt::RtkApplSendAdv, instance, data, dataLength, scanResponse,
                   scanResponseLength, device);
}

int RtkApplCloseAdv(uint8_t instance, rtk::Device device) {
    return Guarded(sim::rtkbt::RtkApplCloseAdv, instance, device);
}

int CkRtkConfigure(const CkRtkSetup* setup, CkRtkReport* report) {
    return Guarded(Configure, setup, report);
}

}  // extern "C"
