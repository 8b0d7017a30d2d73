#include "bluetooth/HciCapture.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"
#include "foundation/FunctionName.h"
#include "platform/Platform.h"

namespace connectkit::bluetooth {

namespace {

constexpr uint32_t kVersion = 1;
constexpr uint32_t kDatalinkH4 = 1002;
constexpr uint8_t kH4Command = 0x01;
constexpr uint8_t kH4Event = 0x04;
// Record flags: bit 0 received, bit 1 command or event.
constexpr uint32_t kFlagsCommandSent = 2;
constexpr uint32_t kFlagsEventReceived = 3;
// Microseconds from 0000-01-01 (the btsnoop epoch) to 1970-01-01.
constexpr uint64_t kUnixEpochMicros = 0x00DCDDB30F2F8000ull;

struct Recording {
    std::mutex mutex;
    std::ofstream file;
    // Read without the lock, so the no-op case costs one load.
    std::atomic<bool> active{false};
};

Recording& State() {
    static Recording recording;
    return recording;
}

void PutBe(std::string& out, uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) {
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    }
}

void Write(uint8_t h4Type, uint32_t flags, const std::vector<uint8_t>& packet) {
    auto& state = State();
    if (!state.active.load()) {
        return;
    }
    const uint64_t micros = platform::Current().clock().UnixTimeMs() * 1000 + kUnixEpochMicros;
    const auto length = static_cast<uint32_t>(packet.size() + 1);
    std::string record;
    PutBe(record, length, 4);
    PutBe(record, length, 4);
    PutBe(record, flags, 4);
    PutBe(record, 0, 4);
    PutBe(record, micros, 8);
    record.push_back(static_cast<char>(h4Type));
    record.append(packet.begin(), packet.end());
    std::lock_guard<std::mutex> guard(state.mutex);
    if (!state.active.load()) {
        return;
    }
    state.file.write(record.data(), static_cast<std::streamsize>(record.size()));
    state.file.flush();
    if (!state.file) {
        LogErrorFun("%s write failed, capture stopped", CK_FUNCTION);
        state.file.close();
        state.active = false;
    }
}

}  // namespace

bool HciCapture::Start(const std::wstring& path) {
    auto& state = State();
    std::lock_guard<std::mutex> guard(state.mutex);
    state.active = false;
    state.file.close();
    state.file.clear();
    state.file.open(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
    std::string header("btsnoop", 8);
    PutBe(header, kVersion, 4);
    PutBe(header, kDatalinkH4, 4);
    state.file.write(header.data(), static_cast<std::streamsize>(header.size()));
    state.file.flush();
    if (!state.file) {
        LogErrorFun("%s cannot write the capture file", CK_FUNCTION);
        state.file.close();
        return false;
    }
    state.active = true;
    return true;
}

void HciCapture::Stop() {
    auto& state = State();
    std::lock_guard<std::mutex> guard(state.mutex);
    state.active = false;
    state.file.close();
}

void HciCapture::Command(const std::vector<uint8_t>& packet) {
    Write(kH4Command, kFlagsCommandSent, packet);
}

void HciCapture::Event(const std::vector<uint8_t>& packet) {
    Write(kH4Event, kFlagsEventReceived, packet);
}

}  // namespace connectkit::bluetooth
