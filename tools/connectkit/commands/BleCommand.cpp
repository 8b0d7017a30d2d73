// `ble` advertises this PC the way the suite does (BLEAdvertiser, its four
// kinds of advertisement on the controller's multi-advertising instances),
// stops them, lists what is on the air, and scans (BleScanCommand.cpp).
//
// The capture (--capture) records every vendor HCI command the library sends
// and the controller's answer as a btsnoop file (bluetooth/HciCapture.h) that
// Wireshark opens. With the Broadcom vendor dissector selected
// (tshark -d bthci_cmd.vendor,bthci_vendor.broadcom) it decodes the
// multi-advertising command 0xFD54's set-parameters (sub-opcode 1) and enable
// (5) field by field; the data commands (2 and 3) carry a data-length byte
// before the data that the dissector does not expect, so their fields come
// out shifted by one: read those by their raw bytes.

#include <CLI/CLI.hpp>
#include <cstdio>

#include "Context.h"
#include "Machine.h"
#include "bluetooth/HciCapture.h"
#include "commands/Ble.h"
#include "commands/Commands.h"
#include "connectkit/BLEAdvertiser.h"
#include "foundation/Hex.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {
namespace {

const std::vector<std::string> kKinds = {"general", "nearpair", "beamlet", "test"};

struct AdvertiseOptions {
    std::string kind;
    std::vector<std::string> hex;
    unsigned seconds = 0;
    unsigned tries = 1;
    std::string capture;
};

std::string ErrorText(unsigned long code) {
    char text[11];
    std::snprintf(text, sizeof(text), "0x%08lX", code);
    return text;
}

// Prints each error the advertiser reports, as it reports it.
class ErrorPrinter final : public BLEAdvertiser::INotification {
public:
    explicit ErrorPrinter(Context& context) : context_(context) {
        BLEAdvertiser::GetUniqueInstance()->RegisterEventCallback(this);
    }
    ~ErrorPrinter() { BLEAdvertiser::GetUniqueInstance()->UnRegisterEventCallback(this); }
    void OnAdvertiseError(unsigned long code) override {
        context_.Print("error    " + ErrorText(code) + "\n", {{"event", "error"}, {"code", code}});
    }

private:
    Context& context_;
};

// The advertisement of `kind` with `payloads`; true when it is on.
bool Start(BLEAdvertiser& front, const std::string& kind,
           const std::vector<std::vector<uint8_t>>& payloads) {
    const auto& first = payloads[0];
    const int length = static_cast<int>(first.size());
    if (kind == "general") {
        std::vector<const uint8_t*> buffers;
        std::vector<int> lengths;
        for (const auto& payload : payloads) {
            buffers.push_back(payload.data());
            lengths.push_back(static_cast<int>(payload.size()));
        }
        return front.StartAdvertise(buffers, lengths, 0);
    }
    if (kind == "nearpair") {
        return front.StartAdvertiseForNearPair(first.data(), length, 0);
    }
    if (kind == "test") {
        return front.StartAdvertiseForTest(first.data(), length) == 0;
    }
    // The beamlet advertisement answers nothing: only its last error tells.
    front.SetLastError(0);
    front.StartAdvertiseForBeamlet(first, payloads.size() > 1 ? payloads[1] : first);
    return front.GetLastError() == 0;
}

void Stop(BLEAdvertiser& front, const std::string& kind) {
    if (kind == "general") {
        front.StopAdvertise(0);
    } else if (kind == "nearpair") {
        front.StopAdvertiseForNearPair(0);
    } else if (kind == "beamlet") {
        front.StopAdvertiseForBeamlet();
    } else {
        front.StopAdvertiseForTest();
    }
}

nlohmann::json SectionsJson(const std::vector<platform::BleDataSection>& sections) {
    auto json = nlohmann::json::array();
    for (const auto& section : sections) {
        json.push_back({{"type", section.dataType}, {"data", ToHex(section.data)}});
    }
    return json;
}

std::string SectionsText(const std::vector<platform::BleDataSection>& sections) {
    std::string text;
    for (const auto& section : sections) {
        char type[4];
        std::snprintf(type, sizeof(type), "%02x:", section.dataType);
        text += std::string(" ") + type + ToHex(section.data);
    }
    return text;
}

void Air(Context& context) {
    std::vector<AirAdvertiser> air;
    if (!AirAdvertisers(air)) {
        context.Fail(kExitFailed,
                     "only the simulated PC knows what is on the air; `ble scan` listens here");
        return;
    }
    if (air.empty()) {
        context.Print("nothing on the air\n", {{"event", "air"}, {"advertisers", 0}});
    }
    for (const auto& advertiser : air) {
        char line[96];
        std::snprintf(line, sizeof(line), "%-20s %s %4d dBm every %4u ms type %d",
                      advertiser.name.c_str(), AddressText(advertiser.address).c_str(),
                      advertiser.rssi, advertiser.intervalMs, static_cast<int>(advertiser.type));
        std::string text = std::string(line) + " adv" + SectionsText(advertiser.advertisement);
        if (!advertiser.scanResponse.empty()) {
            text += " resp" + SectionsText(advertiser.scanResponse);
        }
        context.Print(text + "\n", {{"event", "air"},
                                    {"name", advertiser.name},
                                    {"address", AddressText(advertiser.address)},
                                    {"rssi", advertiser.rssi},
                                    {"intervalMs", advertiser.intervalMs},
                                    {"type", static_cast<int>(advertiser.type)},
                                    {"advertisement", SectionsJson(advertiser.advertisement)},
                                    {"scanResponse", SectionsJson(advertiser.scanResponse)}});
    }
}

// Prints the air when this machine knows it, quietly skipping it otherwise.
void ShowAir(Context& context) {
    std::vector<AirAdvertiser> air;
    if (AirAdvertisers(air)) {
        Air(context);
    }
}

void Advertise(Context& context, const AdvertiseOptions& options) {
    std::vector<std::vector<uint8_t>> payloads;
    for (const auto& hex : options.hex) {
        std::vector<uint8_t> bytes;
        if (!HexToBytes(hex, bytes)) {
            context.Fail(kExitUsage, "not a payload in hex: " + hex);
            return;
        }
        payloads.push_back(bytes);
    }
    const size_t most = options.kind == "general" || options.kind == "beamlet" ? 2 : 1;
    if (payloads.size() > most) {
        context.Fail(kExitUsage, options.kind + " takes at most " + std::to_string(most) +
                                     " payload" + (most > 1 ? "s" : ""));
        return;
    }
    if (!options.capture.empty()) {
        if (!bluetooth::HciCapture::Start(DE::UTF8ToUnicode(options.capture))) {
            context.Fail(kExitFailed, "the capture file cannot be written: " + options.capture);
            return;
        }
        context.AtExit([] { bluetooth::HciCapture::Stop(); });
    }
    auto& front = *BLEAdvertiser::GetUniqueInstance();
    ErrorPrinter errors(context);
    bool on = false;
    for (unsigned attempt = 1; attempt <= options.tries && !on; ++attempt) {
        on = Start(front, options.kind, payloads);
        const unsigned long code = on ? 0 : front.GetLastError();
        context.Print("attempt  " + std::to_string(attempt) + ": " +
                          (on ? "advertising" : "failed, last error " + ErrorText(code)) + "\n",
                      {{"event", "advertise"},
                       {"kind", options.kind},
                       {"attempt", attempt},
                       {"advertising", on},
                       {"lastError", code}});
    }
    if (!on) {
        context.exitCode = kExitFailed;
        return;
    }
    ShowAir(context);
    if (options.seconds > 0) {
        platform::Current().clock().Sleep(options.seconds * 1000);
        Stop(front, options.kind);
        context.Print(
            "stopped  " + options.kind + " after " + std::to_string(options.seconds) + " s\n",
            {{"event", "stopped"}, {"kind", options.kind}});
        ShowAir(context);
    }
}

void StopKind(Context& context, const std::string& kind) {
    auto& front = *BLEAdvertiser::GetUniqueInstance();
    front.SetLastError(0);
    Stop(front, kind);
    const unsigned long code = front.GetLastError();
    context.Print("stopped  " + kind + ", last error " + ErrorText(code) + "\n",
                  {{"event", "stopped"}, {"kind", kind}, {"lastError", code}});
    ShowAir(context);
}

}  // namespace

void AddBleCommand(CLI::App& app, Context& context) {
    auto* ble = app.add_subcommand(
        "ble",
        "Bluetooth LE: advertise this PC (BLEAdvertiser), stop, scan for the suite's phones "
        "(ConnectKit::BleScanner) and list what is on the air");
    ble->require_subcommand(1);

    static AdvertiseOptions advertise;
    auto* start = ble->add_subcommand(
        "advertise",
        "Start an advertisement: general (one payload, or two on instances 1 and 2), nearpair, "
        "beamlet (advertisement and scan response) or test. A payload's first byte picks its "
        "form: 14 manufacturer data of 0x027D, 15 service data of 0xFE35. Without --seconds the "
        "advertisement stays on when the tool exits");
    start->add_option("KIND", advertise.kind, "general, nearpair, beamlet or test")
        ->required()
        ->check(CLI::IsMember(kKinds));
    start->add_option("HEX", advertise.hex, "The payloads in hex, such as 0e0102")->required();
    start->add_option("--seconds", advertise.seconds,
                      "Advertise for N seconds of the PC's time, then stop");
    start
        ->add_option("--tries", advertise.tries,
                     "Start up to N times until the advertisement is on (default 1)")
        ->check(CLI::Range(1u, 100u));
    start
        ->add_option("--capture", advertise.capture,
                     "Record the vendor HCI commands and the controller's answers as a btsnoop "
                     "file for Wireshark (tshark -d bthci_cmd.vendor,bthci_vendor.broadcom "
                     "decodes sub-opcodes 1 and 5; the data commands 2 and 3 carry a length "
                     "byte the dissector does not expect, so read those by their raw bytes)")
        ->type_name("FILE");
    start->callback([&context] { Advertise(context, advertise); });

    static std::string stopKind;
    auto* stop = ble->add_subcommand("stop", "Stop an advertisement of KIND");
    stop->add_option("KIND", stopKind, "general, nearpair, beamlet or test")
        ->required()
        ->check(CLI::IsMember(kKinds));
    stop->callback([&context] { StopKind(context, stopKind); });

    ble->add_subcommand("air",
                        "What is on the air around the simulated PC, its own "
                        "advertisements included (section type:bytes in hex)")
        ->callback([&context] { Air(context); });
    AddBleScanSubcommand(*ble, context);
}

}  // namespace connectkit::tool
