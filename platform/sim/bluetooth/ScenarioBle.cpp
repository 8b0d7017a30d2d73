// The scenario's "ble" section. Every field is optional; the values shown
// are the defaults (see SimBle.h and SimHciController.h for what they do).
//
//   "ble": {
//     "elevated": true,                      (false: privileges cannot be enabled)
//     "lmpVersion": 9,                       (the controllers' Bluetooth version)
//     "ownRssi": -40,                        (how this PC's own advertising is heard)
//     "controller": {
//       "instances": 5,
//       "latencyMs": {"setParameters": 0, "setData": 0, "setScanResponse": 0, "enable": 0},
//       "noAnswerWaitMs": 5000,              (the stack's wait for an event)
//       "faults": [{"subOpcode": 0,          (0: any)
//                   "kind": "disallowed|unknown|silent|wrongEvent|wrongOpcode|oversizedEvent",
//                   "times": 0}]             (0: every command)
//     },
//     "watcher": {"abortOnStart": false, "abortError": "otherError|resourceInUse|
//                 disabledByPolicy|disabledByUser|notSupported",
//                 "silentOnRadioOff": false,  (true: no Stopped event when the radio goes off)
//                 "refuseThreshold": false},  (true: setting the in-range threshold throws)
//     "realtekLibrary": {"present": (default: whether the wifiCard is Realtek's),
//                        "busy": {"RtkApplSendAdv": 0},  (calls answered 5 first, by export)
//                        "failingOpens": 0},
//     "phones": [{"name": "phone", "address": "5C0A1B2C3D4E", "rssi": -60,
//                 "intervalMs": 100,
//                 "type": "nonConnectable|scannable|connectable|directed",
//                 "onAir": true,
//                 "advertisement": [section], "scanResponse": [section]}]
//   }
//   section: {"type": 22, "data": "35fe01"}          (a raw section, any length)
//          | {"manufacturer": 637, "data": "0e01"}   (type 0xFF, company first)
//          | {"serviceData": 65077, "data": "0f01"}  (type 0x16, UUID first)
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/ScenarioFields.h"

namespace connectkit::sim::parse {
namespace {

using platform::BleAdvertisementType;
using platform::BleDataSection;

std::vector<uint8_t> Hex(const Fields& fields) {
    std::vector<uint8_t> bytes;
    if (fields.Find("data") && !HexToBytes(fields.Text("data"), bytes)) {
        throw FieldError{fields.Path("data"), "expected pairs of hex digits"};
    }
    return bytes;
}

BleDataSection ParseSection(const Fields& entry) {
    entry.Only({"type", "manufacturer", "serviceData", "data"});
    auto data = Hex(entry);
    for (auto [key, type] : {std::pair{"manufacturer", 0xFF}, std::pair{"serviceData", 0x16}}) {
        if (entry.Find(key)) {
            auto id = static_cast<uint16_t>(entry.Integer(key, 0, 0, 0xFFFF));
            data.insert(data.begin(), {static_cast<uint8_t>(id), static_cast<uint8_t>(id >> 8)});
            return {static_cast<uint8_t>(type), data};
        }
    }
    if (!entry.Find("type")) {
        throw FieldError{entry.Path("type"), "a section needs a type, manufacturer or serviceData"};
    }
    return {static_cast<uint8_t>(entry.Integer("type", 0, 0, 0xFF)), data};
}

std::vector<BleDataSection> ParseSections(const Fields& fields, const char* key) {
    std::vector<BleDataSection> sections;
    if (const json* list = fields.Find(key)) {
        ForEachObject(*list, fields.Path(key),
                      [&](const Fields& entry) { sections.push_back(ParseSection(entry)); });
    }
    return sections;
}

SimBlePhone ParsePhone(const Fields& entry) {
    entry.Only({"name", "address", "rssi", "intervalMs", "type", "onAir", "advertisement",
                "scanResponse"});
    SimBlePhone phone;
    phone.name = entry.Text("name", phone.name);
    phone.address = DeviceAddress(entry, phone.address);
    phone.rssi = static_cast<int16_t>(entry.Integer("rssi", phone.rssi, -127, 20));
    phone.intervalMs =
        static_cast<uint32_t>(entry.Integer("intervalMs", phone.intervalMs, 1, 10240));
    static constexpr std::pair<const char*, BleAdvertisementType> kTypes[] = {
        {"nonConnectable", BleAdvertisementType::NonConnectableUndirected},
        {"scannable", BleAdvertisementType::ScannableUndirected},
        {"connectable", BleAdvertisementType::ConnectableUndirected},
        {"directed", BleAdvertisementType::ConnectableDirected}};
    phone.type = Choice(entry, "type", kTypes, phone.type);
    phone.onAir = Flag(entry, "onAir", phone.onAir);
    phone.advertisement = ParseSections(entry, "advertisement");
    phone.scanResponse = ParseSections(entry, "scanResponse");
    return phone;
}

void ParseController(const Fields& fields, SimHciSettings& settings) {
    fields.Only({"instances", "latencyMs", "noAnswerWaitMs", "faults"});
    settings.instances =
        static_cast<uint8_t>(fields.Integer("instances", settings.instances, 1, 16));
    settings.noAnswerWaitMs = fields.Unsigned("noAnswerWaitMs", settings.noAnswerWaitMs);
    if (const json* latency = fields.Find("latencyMs")) {
        Fields entry(*latency, fields.Path("latencyMs"));
        entry.Only({"setParameters", "setData", "setScanResponse", "enable"});
        static constexpr std::pair<const char*, uint8_t> kSubOpcodes[] = {
            {"setParameters", 1}, {"setData", 2}, {"setScanResponse", 3}, {"enable", 5}};
        for (auto [name, subOpcode] : kSubOpcodes) {
            if (entry.Find(name)) {
                settings.latencyMs[subOpcode] = entry.Unsigned(name, 0);
            }
        }
    }
    if (const json* faults = fields.Find("faults")) {
        ForEachObject(*faults, fields.Path("faults"), [&](const Fields& entry) {
            entry.Only({"subOpcode", "kind", "times"});
            using Kind = SimHciFault::Kind;
            static constexpr std::pair<const char*, Kind> kKinds[] = {
                {"disallowed", Kind::Disallowed},   {"unknown", Kind::Unknown},
                {"silent", Kind::Silent},           {"wrongEvent", Kind::WrongEvent},
                {"wrongOpcode", Kind::WrongOpcode}, {"oversizedEvent", Kind::OversizedEvent}};
            SimHciFault fault;
            fault.subOpcode = static_cast<uint8_t>(entry.Integer("subOpcode", 0, 0, 0xFF));
            fault.kind = Choice(entry, "kind", kKinds, fault.kind);
            fault.times = entry.Unsigned("times", 0);
            settings.faults.push_back(fault);
        });
    }
}

void ParseRealtekLibrary(const Fields& fields, SimBleConfig::RealtekLibrary& library) {
    fields.Only({"present", "busy", "failingOpens"});
    if (fields.Find("present")) {
        library.present = Flag(fields, "present", true);
    }
    library.settings.failingOpens = fields.Unsigned("failingOpens", 0);
    if (const json* busy = fields.Find("busy")) {
        Fields entry(*busy, fields.Path("busy"));
        entry.Only({platform::rtk::kOpenDevice, platform::rtk::kCloseDevice,
                    platform::rtk::kSetMultiAdvParam, platform::rtk::kSendAdv,
                    platform::rtk::kCloseAdv});
        for (const char* name : {platform::rtk::kOpenDevice, platform::rtk::kCloseDevice,
                                 platform::rtk::kSetMultiAdvParam, platform::rtk::kSendAdv,
                                 platform::rtk::kCloseAdv}) {
            if (entry.Find(name)) {
                library.settings.busy[name] = entry.Unsigned(name, 0);
            }
        }
    }
}

}  // namespace

void ParseBle(const json& value, const std::string& path, Scenario& scenario) {
    Fields ble(value, path);
    ble.Only(
        {"elevated", "lmpVersion", "ownRssi", "controller", "watcher", "realtekLibrary", "phones"});
    auto& config = scenario.ble;
    config.elevated = Flag(ble, "elevated", config.elevated);
    config.lmpVersion = static_cast<uint8_t>(ble.Integer("lmpVersion", config.lmpVersion, 0, 0xFF));
    config.ownRssi = static_cast<int16_t>(ble.Integer("ownRssi", config.ownRssi, -127, 20));
    if (const json* controller = ble.Find("controller")) {
        ParseController(Fields(*controller, ble.Path("controller")), config.controller);
    }
    if (const json* watcher = ble.Find("watcher")) {
        Fields entry(*watcher, ble.Path("watcher"));
        entry.Only({"abortOnStart", "abortError", "silentOnRadioOff", "refuseThreshold"});
        using platform::BluetoothError;
        static constexpr std::pair<const char*, BluetoothError> kErrors[] = {
            {"otherError", BluetoothError::OtherError},
            {"resourceInUse", BluetoothError::ResourceInUse},
            {"disabledByPolicy", BluetoothError::DisabledByPolicy},
            {"disabledByUser", BluetoothError::DisabledByUser},
            {"notSupported", BluetoothError::NotSupported}};
        config.watcher.abortOnStart = Flag(entry, "abortOnStart", config.watcher.abortOnStart);
        config.watcher.abortError = Choice(entry, "abortError", kErrors, config.watcher.abortError);
        config.watcher.silentOnRadioOff =
            Flag(entry, "silentOnRadioOff", config.watcher.silentOnRadioOff);
        config.watcher.refuseThreshold =
            Flag(entry, "refuseThreshold", config.watcher.refuseThreshold);
    }
    if (const json* library = ble.Find("realtekLibrary")) {
        ParseRealtekLibrary(Fields(*library, ble.Path("realtekLibrary")), config.realtekLibrary);
    }
    if (const json* phones = ble.Find("phones")) {
        ForEachObject(*phones, ble.Path("phones"),
                      [&](const Fields& entry) { config.phones.push_back(ParsePhone(entry)); });
    }
}

}  // namespace connectkit::sim::parse
