#include "platform/windows/winrt/RuntimeCall.h"

#include <cstdio>

#include "platform/ports/Errors.h"

namespace connectkit::win {

void Check(HRESULT result, const char* call) {
    if (SUCCEEDED(result)) {
        return;
    }
    char what[160];
    std::snprintf(what, sizeof what, "%s failed, hresult 0x%08lx", call,
                  static_cast<unsigned long>(result));
    throw platform::PlatformError(result, what);
}

void ThrowNull(const char* call) {
    char what[160];
    std::snprintf(what, sizeof what, "%s answered no object", call);
    throw platform::PlatformError(E_POINTER, what);
}

}  // namespace connectkit::win
