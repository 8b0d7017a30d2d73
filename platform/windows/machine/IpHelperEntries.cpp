#include "platform/windows/machine/IpHelperEntries.h"

namespace connectkit::win {
namespace {

struct LoadedEntries final : IpHelperEntries {
    LoadedModule library;
};

}  // namespace

std::shared_ptr<const IpHelperEntries> LoadIpHelperEntries(const LibrarySource& library,
                                                           uint32_t& error) {
    auto entries = std::make_shared<LoadedEntries>();
    const SystemLibraryLoader loader(L"[IpHelper]", error);
    if (!loader.Load(library.name, library.searchFlags, entries->library)) {
        return nullptr;
    }
    HMODULE module = entries->library.Get();
    const bool found =
        loader.Resolve(module, "GetAdaptersAddresses", entries->getAdaptersAddresses) &&
        loader.Resolve(module, "GetAdaptersInfo", entries->getAdaptersInfo) &&
        loader.Resolve(module, "GetInterfaceInfo", entries->getInterfaceInfo) &&
        loader.Resolve(module, "IpReleaseAddress", entries->ipReleaseAddress) &&
        loader.Resolve(module, "IpRenewAddress", entries->ipRenewAddress);
    return found ? entries : nullptr;
}

}  // namespace connectkit::win
