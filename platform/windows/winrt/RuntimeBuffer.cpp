#include "platform/windows/winrt/RuntimeBuffer.h"

#include <algorithm>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ports/Errors.h"
#include "platform/windows/winrt/Activate.h"

namespace connectkit::win {
namespace {

// The bytes behind `buffer`, or null when it does not show them.
uint8_t* BytesOf(abi::IBuffer* buffer) {
    auto access = Query<abi::IBufferByteAccess>(buffer);
    uint8_t* bytes = nullptr;
    if (!access || FAILED(access->Buffer(&bytes))) {
        return nullptr;
    }
    return bytes;
}

}  // namespace

bool ReadBuffer(abi::IBuffer* buffer, const char* what, uint32_t maxBytes,
                std::vector<uint8_t>& bytes) {
    bytes.clear();
    if (!buffer) {
        LogErrorFun("[WinRT] %s has no buffer; skipped", what);
        return false;
    }
    uint32_t length = 0;
    uint32_t capacity = 0;
    Check(buffer->get_Length(&length), "IBuffer::get_Length");
    Check(buffer->get_Capacity(&capacity), "IBuffer::get_Capacity");
    if (length > capacity) {
        LogErrorFun("[WinRT] %s: buffer length %u exceeds its capacity %u; skipped", what, length,
                    capacity);
        return false;
    }
    if (length > maxBytes) {
        LogErrorFun("[WinRT] %s: buffer length %u exceeds the %u bytes it can hold; skipped", what,
                    length, maxBytes);
        return false;
    }
    if (length == 0) {
        return true;
    }
    const uint8_t* data = BytesOf(buffer);
    if (!data) {
        LogErrorFun("[WinRT] %s: the buffer's %u bytes cannot be reached; skipped", what, length);
        return false;
    }
    bytes.assign(data, data + length);
    return true;
}

ComPtr<abi::IBuffer> NewBuffer(RuntimeActivation& runtime, const std::vector<uint8_t>& bytes) {
    auto factory =
        Factory<abi::IBufferFactory>(runtime, abi::kBufferClass, "RoGetActivationFactory(Buffer)");
    auto size = static_cast<uint32_t>(bytes.size());
    auto buffer =
        Fetch<abi::IBuffer>([&](abi::IBuffer** value) { return factory->Create(size, value); },
                            "IBufferFactory::Create");
    if (size > 0) {
        uint32_t capacity = 0;
        Check(buffer->get_Capacity(&capacity), "IBuffer::get_Capacity");
        uint8_t* data = BytesOf(buffer.Get());
        if (!data || capacity < size) {
            throw platform::PlatformError(E_UNEXPECTED,
                                          "IBufferByteAccess::Buffer gave no room for the bytes");
        }
        std::copy(bytes.begin(), bytes.end(), data);
    }
    Check(buffer->put_Length(size), "IBuffer::put_Length");
    return buffer;
}

}  // namespace connectkit::win
