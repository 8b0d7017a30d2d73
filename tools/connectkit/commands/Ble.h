#pragma once
// What the `ble` subcommands share: how addresses and bytes are written, and
// the scan subcommand, which lives in its own file.

#include <cstdint>
#include <string>

namespace CLI {
class App;
}

namespace connectkit::tool {

class Context;

// Most significant byte first, as people and the registry write it.
std::string AddressText(uint64_t address);

void AddBleScanSubcommand(CLI::App& ble, Context& context);

}  // namespace connectkit::tool
