#include "platform/windows/wlan/WlanEntries.h"

namespace connectkit::win {
namespace {

struct LoadedEntries final : WlanEntries {
    LoadedModule library;
};

}  // namespace

std::shared_ptr<const WlanEntries> LoadWlanEntries(const LibrarySource& library, uint32_t& error) {
    auto entries = std::make_shared<LoadedEntries>();
    const SystemLibraryLoader loader(L"[WLAN]", error);
    if (!loader.Load(library.name, library.searchFlags, entries->library)) {
        return nullptr;
    }
    HMODULE module = entries->library.Get();
    const bool found =
        loader.Resolve(module, "WlanOpenHandle", entries->openHandle) &&
        loader.Resolve(module, "WlanCloseHandle", entries->closeHandle) &&
        loader.Resolve(module, "WlanEnumInterfaces", entries->enumInterfaces) &&
        loader.Resolve(module, "WlanScan", entries->scan) &&
        loader.Resolve(module, "WlanGetNetworkBssList", entries->getNetworkBssList) &&
        loader.Resolve(module, "WlanQueryInterface", entries->queryInterface) &&
        loader.Resolve(module, "WlanConnect", entries->connect) &&
        loader.Resolve(module, "WlanDisconnect", entries->disconnect) &&
        loader.Resolve(module, "WlanRegisterNotification", entries->registerNotification) &&
        loader.Resolve(module, "WlanFreeMemory", entries->freeMemory);
    return found ? entries : nullptr;
}

}  // namespace connectkit::win
