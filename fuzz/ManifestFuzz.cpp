// The manifest beside the executable is a file anyone with write access to
// the installation can change: any bytes must give true or false and
// debugger lines, never a crash or a hang.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "connectkit/SystemEnvironment.h"
#include "platform/Platform.h"
#include "platform/sim/SimulatedPc.h"

namespace {

connectkit::sim::SimulatedPc& Pc() {
    static auto pc = [] {
        auto made = std::make_shared<connectkit::sim::SimulatedPc>();
        connectkit::platform::Install(made);
        return made;
    }();
    return *pc;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    auto& pc = Pc();
    pc.Reset();
    pc.files().SetMainModuleDirectory(L"C:\\Suite\\");
    pc.fileContents().SetText(L"C:\\Suite\\plugin.dll", "abc");
    pc.fileContents().SetText(L"C:\\Suite\\config\\CheckFileIntergrity.xml",
                              std::string(reinterpret_cast<const char*>(data), size));
    SystemEnvironment::CompareFileIntergrity("\\plugin.dll");
    return 0;
}
