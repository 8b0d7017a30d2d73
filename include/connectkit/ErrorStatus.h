#pragma once
// The connection error status: the library's one channel for telling the
// suite that the connection path failed. Posted codes are recorded and
// delivered, with their text, to registered ErrorListener objects on a worker
// thread.
//
// The worker makes a single pass: it delivers the first queued notification
// and ends. Later postings are recorded and queued but not delivered. Hosts
// rely on this behaviour as it stands; it is not a bug to fix here.
//
// The instance lives until the process ends and is never destroyed: at
// process exit or unload its destructor could neither wait for the worker
// (ending a thread needs the loader lock) nor take the mutex and queue away
// from a worker that still runs. What a listener throws is caught and
// logged; a listener may unregister itself or stop the worker, which then
// ends after its call instead of waiting for itself.

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <queue>
#include <string>
#include <utility>
#include <vector>

#include "connectkit/Export.h"

namespace connectkit::platform {
class ConditionVariable;
class Mutex;
class Thread;
}  // namespace connectkit::platform

enum ConnectErrorCode : uint32_t {
    CONNECT_ERROR_SUCCESS = 0,
    CONNECT_ERROR_APCHANNEL_GO_ABORT = 0x10000000,
    CONNECT_ERROR_GO_ALREADY_EXIST = 0x10000001,
    // Posted by the channel planner when a 5 GHz channel could not be set.
    // It has no row in the table, so its text is "unknow".
    CONNECT_ERROR_SET_5G_CHANNEL_FAILED = 0x10000002,
    CONNECT_ERROR_BLE_SEND_FAIL = 0x20000000,
};

class CONNECTKIT_API ErrorListener {
public:
    ErrorListener();
    ErrorListener(const ErrorListener&);
    ErrorListener& operator=(const ErrorListener&);
    virtual ~ErrorListener();

    virtual void OnErrorNotification(std::pair<ConnectErrorCode, std::string> notification) = 0;
};

class CONNECTKIT_API ErrorStatus {
public:
    static ErrorStatus* GetInstance();

    // Stops the worker and waits for it, unless called on the worker itself;
    // the object stays usable for posting.
    void DestroyInstance();
    std::string GetErrorString(ConnectErrorCode code);
    void PostNotification(ConnectErrorCode code);
    bool RegistListener(ErrorListener* listener);
    bool UnregistListener(ErrorListener* listener);

    ErrorStatus(const ErrorStatus&) = delete;
    ErrorStatus& operator=(const ErrorStatus&) = delete;
    ~ErrorStatus();

private:
    friend class ErrorStatusInspector;
    using Notification = std::pair<ConnectErrorCode, std::string>;
    using Task = std::pair<std::function<void()>, ErrorListener*>;

    ErrorStatus();

    std::map<ConnectErrorCode, std::string> errorTable_;
    std::unique_ptr<connectkit::platform::Mutex> mutex_;
    std::vector<ErrorListener*> listeners_;
    std::list<Notification> history_;
    size_t historyLimit_;
    std::queue<Task> tasks_;
    std::unique_ptr<connectkit::platform::ConditionVariable> wakeUp_;
    std::vector<std::unique_ptr<connectkit::platform::Thread>> workers_;
    bool stop_;
};
