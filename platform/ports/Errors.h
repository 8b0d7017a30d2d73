#pragma once
// Win32 error codes that ports report, so that code above the ports can name
// them without including <windows.h>.

#include <cstdint>
#include <stdexcept>
#include <string>

namespace connectkit::platform {

inline constexpr uint32_t kErrorSuccess = 0;
inline constexpr uint32_t kErrorFileNotFound = 2;
inline constexpr uint32_t kErrorAccessDenied = 5;
inline constexpr uint32_t kErrorNotSupported = 50;
inline constexpr uint32_t kErrorCallNotImplemented = 120;
inline constexpr uint32_t kErrorModNotFound = 126;
inline constexpr uint32_t kErrorOperationAborted = 995;
inline constexpr uint32_t kErrorTimeout = 1460;
inline constexpr uint32_t kStillActive = 259;

// What a platform call throws when it fails by exception, the way Windows
// Runtime projections throw an hresult error.
class PlatformError : public std::runtime_error {
public:
    PlatformError(int32_t hresult, const std::string& what)
        : std::runtime_error(what), hresult_(hresult) {}
    int32_t hresult() const { return hresult_; }

private:
    int32_t hresult_;
};

}  // namespace connectkit::platform
