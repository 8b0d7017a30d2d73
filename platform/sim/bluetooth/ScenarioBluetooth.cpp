// The scenario's "bluetooth" and "radios" sections. Every field is optional;
// the values shown are the defaults (see SimBluetooth.h for what they do).
//
//   "bluetooth": {
//     "controllers": [{                       (none: a PC without Bluetooth)
//       "instanceId": "USB\\VID_8087&PID_0026\\5&2A1B3C4D&0&10",
//       "hardwareIds": ["USB\\VID_8087&PID_0026&REV_0002", "USB\\VID_8087&PID_0026"],
//       "softwareNodes": ["BTH\\MS_BTHBRB\\7&1F2E3D4C&0&1", "BTH\\MS_RFCOMM\\7&1F2E3D4C&0&0"],
//       "present": true,                      (false: a phantom node, unplugged)
//       "problemCode": 0,                     (non-zero: the driver never starts)
//       "radio": "on|off|hardOff|disabled",   (hardOff: not listed by the platform)
//       "address": "A1B2C3D4E5F6",            (most significant byte first)
//       "name": "LAPTOP-SIM", "classOfDevice": 2752780, "manufacturer": 2,
//       "lmpSubversion": 256,
//       "restartLatencyMs": 1000,             (enable to running, via the class installer)
//       "switch": {behaviour}                 (the platform radio's answers)
//     }],
//     "softwareNodesLast": false              (the BTH\MS nodes enumerate first)
//   },
//   "radios": {
//     "listing": {"latencyMs": 50, "outcomes": ["completed", "canceled", "error"],
//                 "nullEntries": 0},          (outcomes consumed per listing, then completed)
//     "wifi": {"present": (default: whether a wifiCard is installed),
//              "state": "on|off|disabled", "name": "Wi-Fi", "switch": {behaviour}}
//   }
//   behaviour: {"latencyMs": 200, "access": "allowed|deniedByUser|deniedBySystem|busy",
//               "stateChangedTwice": false, "stateThrows": false}
//
// The registry values a controller leaves ("RadioState", "DeviceAddressCache",
// "Local Name") are overridden through the "registry" section, under
// "HKLM\\SYSTEM\\CurrentControlSet\\Enum\\<instanceId>\\Device Parameters".
#include <limits>

#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/ScenarioFields.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::parse {
namespace {

using Controller = SimBluetoothConfig::Controller;

std::vector<std::wstring> WideStrings(const Fields& fields, const char* key,
                                      std::vector<std::wstring> fallback) {
    if (!fields.Find(key)) {
        return fallback;
    }
    std::vector<std::wstring> wide;
    for (const auto& text : Strings(fields, key)) {
        wide.push_back(DE::UTF8ToUnicode(text));
    }
    return wide;
}

void ParseBehaviour(const Fields& fields, const char* key, SimRadioBehaviour& behaviour) {
    const json* value = fields.Find(key);
    if (!value) {
        return;
    }
    Fields entry(*value, fields.Path(key));
    entry.Only({"latencyMs", "access", "stateChangedTwice", "stateThrows"});
    using Access = SimRadioBehaviour::Access;
    static constexpr std::pair<const char*, Access> kAccess[] = {
        {"allowed", Access::Allowed},
        {"deniedByUser", Access::DeniedByUser},
        {"deniedBySystem", Access::DeniedBySystem},
        {"busy", Access::Busy}};
    behaviour.access = Choice(entry, "access", kAccess, behaviour.access);
    behaviour.latencyMs = entry.Unsigned("latencyMs", behaviour.latencyMs);
    behaviour.stateChangedTwice = Flag(entry, "stateChangedTwice", behaviour.stateChangedTwice);
    behaviour.stateThrows = Flag(entry, "stateThrows", behaviour.stateThrows);
}

Controller ParseController(const Fields& entry) {
    entry.Only({"instanceId", "hardwareIds", "softwareNodes", "present", "problemCode", "radio",
                "address", "name", "classOfDevice", "manufacturer", "lmpSubversion",
                "restartLatencyMs", "switch"});
    Controller controller;
    if (entry.Find("instanceId")) {
        controller.instanceId = DE::UTF8ToUnicode(entry.Text("instanceId"));
        if (controller.instanceId.empty()) {
            throw FieldError{entry.Path("instanceId"), "a controller needs an instance id"};
        }
    }
    controller.hardwareIds = WideStrings(entry, "hardwareIds", controller.hardwareIds);
    controller.softwareNodes = WideStrings(entry, "softwareNodes", controller.softwareNodes);
    controller.present = Flag(entry, "present", controller.present);
    controller.problemCode = entry.Unsigned("problemCode", controller.problemCode);
    static constexpr std::pair<const char*, Controller::Radio> kRadio[] = {
        {"on", Controller::Radio::On},
        {"off", Controller::Radio::Off},
        {"hardOff", Controller::Radio::HardOff},
        {"disabled", Controller::Radio::Disabled}};
    controller.radio = Choice(entry, "radio", kRadio, controller.radio);
    controller.address = DeviceAddress(entry, controller.address);
    if (entry.Find("name")) {
        controller.name = DE::UTF8ToUnicode(entry.Text("name"));
    }
    controller.classOfDevice = entry.Unsigned("classOfDevice", controller.classOfDevice);
    controller.manufacturer =
        static_cast<uint16_t>(entry.Integer("manufacturer", controller.manufacturer, 0, 0xFFFF));
    controller.lmpSubversion =
        static_cast<uint16_t>(entry.Integer("lmpSubversion", controller.lmpSubversion, 0, 0xFFFF));
    controller.restartLatencyMs = entry.Unsigned("restartLatencyMs", controller.restartLatencyMs);
    ParseBehaviour(entry, "switch", controller.behaviour);
    return controller;
}

}  // namespace

void ParseBluetooth(const json& value, const std::string& path, Scenario& scenario) {
    Fields bluetooth(value, path);
    bluetooth.Only({"controllers", "softwareNodesLast"});
    auto& config = scenario.bluetooth;
    if (const json* controllers = bluetooth.Find("controllers")) {
        ForEachObject(*controllers, bluetooth.Path("controllers"), [&](const Fields& entry) {
            config.controllers.push_back(ParseController(entry));
        });
    }
    config.softwareNodesLast = Flag(bluetooth, "softwareNodesLast", config.softwareNodesLast);
}

void ParseRadios(const json& value, const std::string& path, Scenario& scenario) {
    Fields radios(value, path);
    radios.Only({"listing", "wifi"});
    auto& config = scenario.bluetooth;
    if (const json* listing = radios.Find("listing")) {
        Fields entry(*listing, radios.Path("listing"));
        entry.Only({"latencyMs", "outcomes", "nullEntries"});
        config.listing.latencyMs = entry.Unsigned("latencyMs", config.listing.latencyMs);
        // Each null entry is an object of the list: a few are all a fault needs.
        config.listing.nullEntries = static_cast<uint32_t>(entry.Integer("nullEntries", 0, 0, 64));
        static constexpr std::pair<const char*, platform::AsyncStatus> kOutcomes[] = {
            {"completed", platform::AsyncStatus::Completed},
            {"canceled", platform::AsyncStatus::Canceled},
            {"error", platform::AsyncStatus::Error}};
        auto texts = Strings(entry, "outcomes");
        for (size_t i = 0; i < texts.size(); ++i) {
            config.listing.outcomes.push_back(
                Pick(texts[i], Indexed(entry.Path("outcomes"), i), kOutcomes));
        }
    }
    if (const json* wifi = radios.Find("wifi")) {
        Fields entry(*wifi, radios.Path("wifi"));
        entry.Only({"present", "state", "name", "switch"});
        if (entry.Find("present")) {
            config.wifi.present = Flag(entry, "present", true);
        }
        static constexpr std::pair<const char*, platform::RadioState> kStates[] = {
            {"on", platform::RadioState::On},
            {"off", platform::RadioState::Off},
            {"disabled", platform::RadioState::Disabled}};
        config.wifi.state = Choice(entry, "state", kStates, config.wifi.state);
        if (entry.Find("name")) {
            config.wifi.name = DE::UTF8ToUnicode(entry.Text("name"));
        }
        ParseBehaviour(entry, "switch", config.wifi.behaviour);
    }
}

}  // namespace connectkit::sim::parse
