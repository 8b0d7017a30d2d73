#include "platform/sim/machine/SimRegistry.h"

#include "platform/sim/core/Scenario.h"

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/SimText.h"

namespace connectkit::sim {

using platform::kErrorAccessDenied;
using platform::kErrorFileNotFound;
using platform::kErrorSuccess;

std::wstring SimRegistry::KeyPath(platform::RegistryHive hive, const std::wstring& key) {
    std::wstring path = hive == platform::RegistryHive::LocalMachine ? L"hklm" : L"hkcu";
    for (const auto& part : SplitPath(key)) {
        path += L'\\';
        path += Lower(part);
    }
    return path;
}

long SimRegistry::Read(platform::RegistryHive hive, const std::wstring& key,
                       const std::wstring& name, platform::RegistryData& value) {
    if (auto error = FaultedCall(faults_, clock_, "registry.read", kErrorAccessDenied)) {
        return static_cast<long>(*error);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = keys_.find(KeyPath(hive, key));
    if (found == keys_.end()) {
        return kErrorFileNotFound;
    }
    auto entry = found->second.find(Lower(name));
    if (entry == found->second.end()) {
        return kErrorFileNotFound;
    }
    value = entry->second;
    return kErrorSuccess;
}

long SimRegistry::Write(platform::RegistryHive hive, const std::wstring& key,
                        const std::wstring& name, const platform::RegistryData& value) {
    if (auto error = FaultedCall(faults_, clock_, "registry.write", kErrorAccessDenied)) {
        return static_cast<long>(*error);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    std::wstring path = KeyPath(hive, L"");
    for (const auto& part : SplitPath(key)) {
        path += L'\\' + Lower(part);
        keys_[path];
    }
    keys_[path][Lower(name)] = value;
    return kErrorSuccess;
}

long SimRegistry::WriteExisting(platform::RegistryHive hive, const std::wstring& key,
                                const std::wstring& name, const platform::RegistryData& value) {
    if (auto error = FaultedCall(faults_, clock_, "registry.write", kErrorAccessDenied)) {
        return static_cast<long>(*error);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = keys_.find(KeyPath(hive, key));
    if (found == keys_.end()) {
        return kErrorFileNotFound;
    }
    found->second[Lower(name)] = value;
    return kErrorSuccess;
}

long SimRegistry::DeleteValue(platform::RegistryHive hive, const std::wstring& key,
                              const std::wstring& name) {
    if (auto error = FaultedCall(faults_, clock_, "registry.delete", kErrorAccessDenied)) {
        return static_cast<long>(*error);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = keys_.find(KeyPath(hive, key));
    if (found == keys_.end() || found->second.erase(Lower(name)) == 0) {
        return kErrorFileNotFound;
    }
    return kErrorSuccess;
}

long SimRegistry::DeleteKey(platform::RegistryHive hive, const std::wstring& key) {
    if (auto error = FaultedCall(faults_, clock_, "registry.delete", kErrorAccessDenied)) {
        return static_cast<long>(*error);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    std::wstring path = KeyPath(hive, key);
    auto first = keys_.find(path);
    if (first == keys_.end() || SplitPath(key).empty()) {
        return kErrorFileNotFound;
    }
    std::wstring below = path + L'\\';
    auto last = first;
    while (last != keys_.end() && (last->first == path || last->first.starts_with(below))) {
        ++last;
    }
    keys_.erase(first, last);
    return kErrorSuccess;
}

void SimRegistry::Apply(const Scenario& scenario) {
    for (const auto& value : scenario.registry) {
        Write(value.hive, value.key, value.name, value.data);
    }
}

void SimRegistry::Reset() {
    std::lock_guard<std::mutex> lock(mutex_);
    keys_.clear();
}

}  // namespace connectkit::sim
