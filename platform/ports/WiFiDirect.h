#pragma once
// Wi-Fi Direct as the Windows Runtime offers it (Windows.Devices.WiFiDirect):
// the advertisement publisher with its legacy settings, the connection
// listener, and the devices that connect through it.
//
// The shapes follow the runtime classes one to one, so the Windows backend is
// a thin layer over the ABI interfaces:
// - Factories return null when the runtime refuses to create the object
//   (class not registered, activation failure); that is an answer, not an
//   error.
// - Every other call that fails throws platform::PlatformError with the
//   HRESULT, the way the runtime's projections throw.
// - Event handlers run on platform threads, never on the caller's; removing a
//   handler (even from inside it) means it is not called again once Remove...
//   returns, except for a call already under way on another thread.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/ports/RuntimeTypes.h"

namespace connectkit::platform {

// WiFiDirectAdvertisementPublisherStatus
enum class PublisherStatus : int32_t { Created = 0, Started = 1, Stopped = 2, Aborted = 3 };
// WiFiDirectError
enum class WiFiDirectError : int32_t { Success = 0, RadioNotAvailable = 1, ResourceInUse = 2 };
// WiFiDirectConnectionStatus
enum class WiFiDirectConnectionStatus : int32_t { Disconnected = 0, Connected = 1 };
struct PublisherStatusChange {
    PublisherStatus status = PublisherStatus::Created;
    WiFiDirectError error = WiFiDirectError::Success;
};

// Windows.Security.Credentials.PasswordCredential: only the password matters
// to the legacy settings.
class PasswordCredential {
public:
    virtual ~PasswordCredential() = default;
    virtual void SetPassword(const std::wstring& password) = 0;
    virtual std::wstring Password() const = 0;
};

class WiFiDirectPublisher {
public:
    using StatusHandler =
        std::function<void(WiFiDirectPublisher& sender, const PublisherStatusChange& change)>;

    virtual ~WiFiDirectPublisher() = default;
    virtual PublisherStatus Status() = 0;
    virtual EventToken AddStatusChanged(StatusHandler handler) = 0;
    virtual void RemoveStatusChanged(EventToken token) = 0;
    // Advertisement().IsAutonomousGroupOwnerEnabled(...)
    virtual void SetAutonomousGroupOwnerEnabled(bool enabled) = 0;
    // Advertisement().LegacySettings().IsEnabled / Ssid / Passphrase
    virtual void SetLegacyEnabled(bool enabled) = 0;
    virtual void SetLegacySsid(const std::wstring& ssid) = 0;
    virtual void SetLegacyPassphrase(const std::shared_ptr<PasswordCredential>& passphrase) = 0;
    // Both return at once; the outcome arrives as a status change.
    virtual void Start() = 0;
    virtual void Stop() = 0;
};

// A WiFiDirectConnectionRequest, reduced to what the listener's user reads.
class WiFiDirectConnectionRequest {
public:
    virtual ~WiFiDirectConnectionRequest() = default;
    // DeviceInformation().Id()
    virtual std::wstring DeviceId() = 0;
};

class WiFiDirectConnectionListener {
public:
    using RequestHandler = std::function<void(std::shared_ptr<WiFiDirectConnectionRequest>)>;

    virtual ~WiFiDirectConnectionListener() = default;
    virtual EventToken AddConnectionRequested(RequestHandler handler) = 0;
    virtual void RemoveConnectionRequested(EventToken token) = 0;
};

// One EndpointPair: host names as their canonical text.
struct EndpointPair {
    std::wstring localHostName;
    std::wstring remoteHostName;
};

class WiFiDirectDevice {
public:
    using StatusHandler = std::function<void(WiFiDirectDevice& sender)>;

    virtual ~WiFiDirectDevice() = default;
    virtual WiFiDirectConnectionStatus ConnectionStatus() = 0;
    virtual std::wstring DeviceId() = 0;
    virtual EventToken AddConnectionStatusChanged(StatusHandler handler) = 0;
    virtual void RemoveConnectionStatusChanged(EventToken token) = 0;
    virtual std::vector<EndpointPair> ConnectionEndpointPairs() = 0;
    // IClosable::Close: ends the connection object; later calls may throw.
    virtual void Close() = 0;
};

class WiFiDirect {
public:
    // Completion of WiFiDirectDevice.FromIdAsync: the device when `status` is
    // Completed, null otherwise.
    using DeviceCompletion =
        std::function<void(AsyncStatus status, std::shared_ptr<WiFiDirectDevice> device)>;

    virtual ~WiFiDirect() = default;
    virtual std::shared_ptr<WiFiDirectPublisher> NewPublisher() = 0;
    virtual std::shared_ptr<WiFiDirectConnectionListener> NewConnectionListener() = 0;
    virtual std::shared_ptr<PasswordCredential> NewPasswordCredential() = 0;
    // Starts WiFiDirectDevice.FromIdAsync(id); `completed` runs once, on a
    // platform thread, possibly before this returns (an operation that
    // finished at once). Throws when the operation cannot even be started.
    virtual void DeviceFromIdAsync(const std::wstring& deviceId, DeviceCompletion completed) = 0;
};

}  // namespace connectkit::platform
