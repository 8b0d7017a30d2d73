#pragma once
// The Bluetooth LE advertisement watcher of the fake runtime: fake watchers
// activated through a FakeRuntime, whose world (faults by call name,
// counters, aborted starts) they share. Buffers, byte patterns and the
// Int16 boxes come from fake Buffer, BluetoothLEAdvertisementBytePattern and
// PropertyValue factories provided to that runtime.
//
// A phone's advertisement is described by value; each buffer may lie about
// its length (`overrun` bytes past its capacity) or be missing. Events are
// raised on threads of their own, as the runtime's pool would.

#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/windows/winrt/abi/BluetoothAdvertisement.h"
#include "winrt/FakeRuntime.h"

namespace connectkit::test {

struct FakeBytes {
    std::vector<uint8_t> bytes;
    uint32_t overrun = 0;
    bool missing = false;
};

struct FakeAdvertisement {
    int16_t rssi = -60;
    uint64_t address = 0;
    int32_t type = 0;
    int64_t timestamp = 0;
    std::vector<std::pair<uint16_t, FakeBytes>> manufacturer;
    std::vector<std::pair<uint8_t, FakeBytes>> sections;
};

// What the watcher's filters hold: the in-range threshold, and each byte
// pattern as type, offset and the bytes of its buffer.
struct FakeFilters {
    std::optional<int16_t> inRange;
    std::vector<std::tuple<uint8_t, int16_t, std::vector<uint8_t>>> patterns;
};

// The watchers the runtime activates; the test drives the newest.
class FakeWatchers {
public:
    // Makes `runtime` activate fake watchers and hand out the factories.
    explicit FakeWatchers(FakeRuntime& runtime);
    ~FakeWatchers() { Drop(); }

    // The newest watcher raises Received when started; false otherwise.
    bool Advertise(const FakeAdvertisement& advertisement);
    // The radio goes off under the newest watcher: Aborted, and Stopped with
    // RadioNotAvailable.
    bool RadioOff();
    FakeFilters Filters();
    // Forgets the newest watcher, so the world can count it gone.
    void Drop();

    struct State;

private:
    std::shared_ptr<State> state_;
};

}  // namespace connectkit::test
