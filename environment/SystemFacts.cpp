// The machine's facts for host modules, each through the system-facts port
// (see the backends for where each comes from). A fact whose source is
// missing is answered as: "" for texts, 0 for the build, 96 for the DPI
// (Windows' 100 % scale, which is what an unknown display is drawn at).
//
// Model feature switches live in the suite's registry key, one subkey per
// model named as the firmware names it, one DWORD per switch:
//   HKLM\SOFTWARE\Veltra\Brisklane\ModelFeatures\<model>\<switch>
// A model without its own value falls back to the "Default" subkey; a switch
// in neither is off, so a feature is only ever on where someone put it.

#include <cstdio>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/SystemEnvironment.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"

namespace {

constexpr wchar_t kFeatures[] = L"SOFTWARE\\Veltra\\Brisklane\\ModelFeatures\\";
constexpr unsigned kDefaultDpi = 96;

connectkit::platform::SystemFacts& Facts() {
    return connectkit::platform::Current().systemFacts();
}

bool ReadSwitch(const std::wstring& row, const std::wstring& name, uint32_t& value) {
    connectkit::platform::RegistryData data;
    return connectkit::platform::Current().registry().Read(
               connectkit::platform::RegistryHive::LocalMachine, kFeatures + row, name, data) ==
               0 &&
           data.ToDword(value);
}

// A model name is one registry key: a backslash in it would reach elsewhere.
bool UsableKeyName(const std::wstring& name) {
    return !name.empty() && name.find(L'\\') == std::wstring::npos;
}

template <class Answer, class Fallback>
auto Guarded(Answer answer, Fallback fallback) -> decltype(answer()) {
    try {
        return answer();
    } catch (const std::exception& error) {
        LogErrorFun("[SystemEnvironment] a system fact could not be read: %.200s", error.what());
    } catch (...) {
        LogErrorFun("[SystemEnvironment] a system fact could not be read: unknown exception");
    }
    return fallback;
}

}  // namespace

std::string SystemEnvironment::GetOsVersion() {
    return Guarded(
        [] {
            connectkit::platform::OsVersion os;
            if (!Facts().ReadOsVersion(os)) {
                return std::string();
            }
            char text[64];
            std::snprintf(text, sizeof text, "%u.%u.%u.%u", os.major, os.minor, os.build,
                          os.updateRevision);
            return std::string(text);
        },
        std::string());
}

unsigned SystemEnvironment::GetOsBuildNumber() {
    return Guarded(
        [] {
            connectkit::platform::OsVersion os;
            return Facts().ReadOsVersion(os) ? os.build : 0u;
        },
        0u);
}

std::string SystemEnvironment::GetOsDisplayVersion() {
    return Guarded(
        [] {
            connectkit::platform::OsVersion os;
            return Facts().ReadOsVersion(os) ? DE::UnicodeToUTF8(os.displayVersion) : std::string();
        },
        std::string());
}

std::string SystemEnvironment::GetBiosVersion() {
    return Guarded([] { return DE::UnicodeToUTF8(Facts().BiosVersion()); }, std::string());
}

std::string SystemEnvironment::GetModelName() {
    return Guarded([] { return DE::UnicodeToUTF8(Facts().SystemModel()); }, std::string());
}

std::string SystemEnvironment::GetDeviceId() {
    return Guarded([] { return DE::UnicodeToUTF8(Facts().DeviceId()); }, std::string());
}

unsigned SystemEnvironment::GetDisplayDpi() {
    return Guarded(
        [] {
            uint32_t dpi = Facts().DisplayDpi();
            return dpi == 0 ? kDefaultDpi : static_cast<unsigned>(dpi);
        },
        kDefaultDpi);
}

bool SystemEnvironment::GetModelFeatureSwitch(const std::string& name) {
    return Guarded(
        [&name] {
            std::wstring wide = DE::UTF8ToUnicode(name);
            std::wstring model = Facts().SystemModel();
            uint32_t value = 0;
            if (wide.empty()) {
                return false;
            }
            if (UsableKeyName(model) && ReadSwitch(model, wide, value)) {
                return value != 0;
            }
            return ReadSwitch(L"Default", wide, value) && value != 0;
        },
        false);
}
