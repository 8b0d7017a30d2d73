#pragma once
// The runtime's byte buffers (Windows.Storage.Streams.IBuffer) in and out.
// A buffer handed to us is read through IBufferByteAccess, no further than
// its Length; a Length past its Capacity says the buffer lies about the
// memory behind it, and a Length past what the caller's data can hold says
// it lies about the data, so nothing of either is read.

#include <cstdint>
#include <vector>

#include "platform/windows/winrt/RuntimeActivation.h"
#include "platform/windows/winrt/RuntimeCall.h"
#include "platform/windows/winrt/abi/Streams.h"

namespace connectkit::win {

// The bytes of `buffer` into `bytes`. False, logged with `what` and nothing
// read, for a buffer that cannot be believed: null, Length past Capacity or
// past `maxBytes`, or bytes it will not show. A failing IBuffer call throws
// PlatformError.
bool ReadBuffer(abi::IBuffer* buffer, const char* what, uint32_t maxBytes,
                std::vector<uint8_t>& bytes);

// A Windows.Storage.Streams.Buffer holding `bytes`; throws PlatformError
// naming the failing call.
ComPtr<abi::IBuffer> NewBuffer(RuntimeActivation& runtime, const std::vector<uint8_t>& bytes);

}  // namespace connectkit::win
