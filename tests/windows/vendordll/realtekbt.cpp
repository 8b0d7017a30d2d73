// Test double of the Realtek Bluetooth library: the simulated library's
// five entries under the real names, sending to a controller model of its
// own, and CkRtkConfigure for the tests.

#include <cstring>
#include <vector>

#include "bthdll/CkHciModel.h"
#include "platform/sim/bluetooth/SimRealtekBluetooth.h"
#include "vendordll/CkRtkControl.h"
#include "vendordll/Guarded.h"

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

CK_GUARDED_EXPORT(RtkApplOpenDevice, (rtk::Device * device), sim::rtkbt::RtkApplOpenDevice(device))
CK_GUARDED_EXPORT(RtkApplCloseDevice, (rtk::Device device), sim::rtkbt::RtkApplCloseDevice(device))
CK_GUARDED_EXPORT(RtkSendHciLeSetMultiAdvParam,
                  (rtk::Device device, const rtk::MultiAdvParam* parameters),
                  sim::rtkbt::RtkSendHciLeSetMultiAdvParam(device, parameters))
CK_GUARDED_EXPORT(RtkApplSendAdv,
                  (uint8_t instance, const uint8_t* data, uint8_t dataLength,
                   const uint8_t* scanResponse, uint8_t scanResponseLength, rtk::Device device),
                  sim::rtkbt::RtkApplSendAdv(instance, data, dataLength, scanResponse,
                                             scanResponseLength, device))
CK_GUARDED_EXPORT(RtkApplCloseAdv, (uint8_t instance, rtk::Device device),
                  sim::rtkbt::RtkApplCloseAdv(instance, device))
CK_GUARDED_EXPORT(CkRtkConfigure, (const CkRtkSetup* setup, CkRtkReport* report),
                  Configure(setup, report))

}  // extern "C"
