// CkTestConfigure, shared by both vendor DLL doubles.

#include <algorithm>
#include <cstring>
#include <exception>
#include <iterator>

#include "platform/sim/wificard/SimWifiDriver.h"
#include "vendordll/CkTestControl.h"

namespace {

using connectkit::sim::SimDriverLog;
using connectkit::sim::SimDriverSettings;

constexpr uint32_t kMostAdapters = 8;

bool Convert(const CkTestDriverSetup& setup, SimDriverSettings& settings) {
    if (setup.adapterCount > kMostAdapters) {
        return false;
    }
    settings.areaCode = setup.areaCode;
    settings.channels.assign(setup.channels, setup.channels + setup.channelCount);
    settings.intelAdapters.clear();
    for (uint32_t i = 0; i < setup.adapterCount; ++i) {
        settings.intelAdapters.push_back({setup.adapters[i].handle, setup.adapters[i].inUse != 0});
    }
    if (setup.listCount.given != 0) {
        settings.intelListCount = setup.listCount.value;
    }
    if (setup.listBytes.given != 0) {
        settings.intelListBytes = setup.listBytes.value;
    }
    settings.realtekInitialisationsBeforeReady = setup.realtekInitialisationsBeforeReady;
    return true;
}

void Fill(const SimDriverLog& log, CkTestDriverReport& report) {
    report = CkTestDriverReport{};
    report.callCount = static_cast<uint32_t>(log.calls.size());
    size_t listed = std::min(log.calls.size(), std::size(report.calls));
    for (size_t i = 0; i < listed; ++i) {
        auto& call = report.calls[i];
        std::strncpy(call.entry, log.calls[i].entry.c_str(), sizeof(call.entry) - 1);
        call.headerSize = log.calls[i].headerSize;
        call.adapter = log.calls[i].adapter;
    }
    report.outstandingBuffers = static_cast<uint32_t>(log.outstandingBuffers);
}

}  // namespace

extern "C" int CkTestConfigure(const CkTestDriverSetup* setup, CkTestDriverReport* report) {
    try {
        if (setup) {
            SimDriverSettings settings;
            if (!Convert(*setup, settings)) {
                return 1;
            }
            connectkit::sim::ConfigureSimDrivers(settings);
        }
        if (report) {
            Fill(connectkit::sim::DriverLog(), *report);
        }
        return 0;
    } catch (const std::exception&) {
        return 1;
    }
}
