#pragma once
// What the `ble` subcommands share: how addresses and bytes are written, and
// the scan subcommand, which lives in its own file.

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace connectkit::tool {

class Context;

// Most significant byte first, as people and the registry write it.
std::string AddressText(uint64_t address);
// Two lowercase digits a byte, nothing between.
std::string HexText(const std::vector<uint8_t>& bytes);
// The bytes of `text` (pairs of hex digits); false when it is not that.
bool ParseHex(const std::string& text, std::vector<uint8_t>& bytes);

void AddBleScanSubcommand(CLI::App& ble, Context& context);

}  // namespace connectkit::tool
