// `ble scan` lists what ConnectKit::BleScanner delivers, and beside it counts
// what it dropped and why. The scanner tells its observers nothing of what it
// drops, so the tool listens with a watcher of its own on the same air, with
// no signal-strength threshold, and sorts each event the way the scanner
// does (bluetooth/ScanFilter.h) and by the scanner's threshold. The printer
// is shared with that watcher's handlers: a delivery already under way when
// they are removed may still land after the scan is over.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>

#include "Context.h"
#include "bluetooth/ScanFilter.h"
#include "commands/Ble.h"
#include "commands/Timeline.h"
#include "connectkit/BleScanner.h"
#include "foundation/Hex.h"
#include "platform/Platform.h"

namespace connectkit::tool {
namespace {

using ConnectKit::BleScanner;

const char* StopReason(platform::BluetoothError error) {
    switch (error) {
        case platform::BluetoothError::Success:
            return "Success";
        case platform::BluetoothError::RadioNotAvailable:
            return "RadioNotAvailable";
        case platform::BluetoothError::ResourceInUse:
            return "ResourceInUse";
        case platform::BluetoothError::DisabledByPolicy:
            return "DisabledByPolicy";
        case platform::BluetoothError::DisabledByUser:
            return "DisabledByUser";
        default:
            return "OtherError";
    }
}

const char* DropReason(bluetooth::ScanVerdict verdict) {
    switch (verdict) {
        case bluetooth::ScanVerdict::OtherUuid:
            return "service data under another UUID";
        case bluetooth::ScanVerdict::ShortSection:
            return "service data shorter than its UUID";
        default:
            return "not exactly one section of the suite's kinds";
    }
}

class ScanPrinter final : public BleScanner::INotification {
public:
    explicit ScanPrinter(Context& context) : out_(context) {}

    void OnRecved(uint64_t address, uint64_t, const std::vector<uint8_t>& payload,
                  ConnectKit::BleAdvType type, uint16_t uuid) override {
        char uuidText[7];
        std::snprintf(uuidText, sizeof(uuidText), "0x%04X", uuid);
        out_.Emit(AddressText(address) + " type " + std::to_string(type) + " uuid " + uuidText +
                      " " + ToHex(payload),
                  {{"event", "received"},
                   {"address", AddressText(address)},
                   {"type", static_cast<int>(type)},
                   {"uuid", uuid},
                   {"payload", ToHex(payload)}});
        std::lock_guard<std::mutex> lock(mutex_);
        ++delivered_;
    }
    void OnStopped() override { out_.Emit("scanner stopped", {{"event", "stopped"}}); }

    // The tool's own watcher's view of one event.
    void Sort(const platform::BleAdvertisementReceived& received) {
        const char* reason = nullptr;
        bluetooth::ScanDelivery delivery;
        if (received.rawSignalStrengthInDBm < BleScanner::minSignalStrength) {
            reason = "weaker than the scanner's threshold";
        } else if (auto verdict = bluetooth::ClassifyAdvertisement(received, delivery);
                   verdict != bluetooth::ScanVerdict::Deliver) {
            reason = DropReason(verdict);
        }
        if (reason) {
            std::lock_guard<std::mutex> lock(mutex_);
            ++dropped_[reason];
        }
    }
    void WatcherStopped(platform::BluetoothError error) {
        out_.Emit(std::string("watcher stopped: ") + StopReason(error),
                  {{"event", "watcherStopped"}, {"error", StopReason(error)}});
    }

    void Summary(Context& context, bool counted) {
        std::lock_guard<std::mutex> lock(mutex_);
        unsigned total = 0;
        std::string reasons;
        nlohmann::json byReason = nlohmann::json::object();
        for (const auto& [reason, count] : dropped_) {
            total += count;
            reasons += "\n  " + std::to_string(count) + " " + reason;
            byReason[reason] = count;
        }
        if (!counted) {
            context.Print("delivered " + std::to_string(delivered_) +
                              " (drops not counted: no second watcher)\n",
                          {{"event", "summary"}, {"delivered", delivered_}});
            return;
        }
        context.Print("delivered " + std::to_string(delivered_) + ", dropped " +
                          std::to_string(total) + reasons + "\n",
                      {{"event", "summary"},
                       {"delivered", delivered_},
                       {"dropped", total},
                       {"reasons", byReason}});
    }

private:
    Timeline out_;
    std::mutex mutex_;
    unsigned delivered_ = 0;
    std::map<std::string, unsigned> dropped_;
};

void Scan(Context& context, unsigned seconds) {
    auto printer = std::make_shared<ScanPrinter>(context);
    auto watcher = platform::Current().bluetoothLE().NewWatcher();
    platform::EventToken received = 0;
    platform::EventToken stopped = 0;
    if (watcher) {
        watcher->SetScanningMode(platform::BleScanningMode::Active);
        received = watcher->AddReceived(
            [printer](platform::BleAdvertisementWatcher&,
                      const platform::BleAdvertisementReceived& args) { printer->Sort(args); });
        stopped = watcher->AddStopped(
            [printer](platform::BleAdvertisementWatcher&, platform::BluetoothError error) {
                printer->WatcherStopped(error);
            });
    }
    {
        BleScanner scanner;
        scanner.RegisterRecvedCallback(printer.get());
        context.Progress("scanning for " + std::to_string(seconds) + " s...");
        scanner.Start();
        if (watcher) {
            watcher->Start();
        }
        // Advertisements due at the window's last millisecond count too,
        // whichever thread the clock wakes first.
        platform::Current().clock().Sleep(seconds * 1000 + 1);
        scanner.UnRegisterRecvedCallback(printer.get());
        scanner.Stop();
    }
    if (watcher) {
        watcher->RemoveReceived(received);
        watcher->RemoveStopped(stopped);
        watcher->Stop();
    }
    printer->Summary(context, watcher != nullptr);
}

}  // namespace

void AddBleScanSubcommand(CLI::App& ble, Context& context) {
    static unsigned seconds = 5;
    auto* scan = ble.add_subcommand(
        "scan",
        "Scan in active mode with ConnectKit::BleScanner: one line per advertisement it "
        "delivers (address, advertisement type, UUID, payload in hex), then how many events it "
        "dropped and why, as a second watcher on the same air sorts them");
    scan->add_option("--seconds", seconds, "Scan for N seconds of the PC's time (default 5)")
        ->check(CLI::Range(1u, 86400u));
    scan->callback([&context] { Scan(context, seconds); });
}

}  // namespace connectkit::tool
