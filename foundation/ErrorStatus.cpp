#include "connectkit/ErrorStatus.h"

#include <algorithm>
#include <exception>
#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/LibraryThreads.h"
#include "platform/Platform.h"

namespace {

// The listener is the host's object, called on our worker thread: what it
// throws would end the host's process. It stops here, and the worker ends
// its pass as after any delivery.
void Deliver(const std::function<void()>& task) {
    try {
        task();
    } catch (const std::exception& error) {
        LogErrorFun("%s an error listener threw: %.200s", "ErrorStatus worker", error.what());
    } catch (...) {
        LogErrorFun("%s an error listener threw an unknown exception", "ErrorStatus worker");
    }
}

}  // namespace

ErrorListener::ErrorListener() = default;
ErrorListener::ErrorListener(const ErrorListener&) = default;
ErrorListener& ErrorListener::operator=(const ErrorListener&) = default;
ErrorListener::~ErrorListener() = default;

ErrorStatus* ErrorStatus::GetInstance() {
    static ErrorStatus* instance = new ErrorStatus();
    return instance;
}

ErrorStatus::ErrorStatus()
    : errorTable_{{CONNECT_ERROR_SUCCESS, "success"},
                  {CONNECT_ERROR_APCHANNEL_GO_ABORT, "apchannel go abort"},
                  {CONNECT_ERROR_GO_ALREADY_EXIST, "go already exist"},
                  {CONNECT_ERROR_BLE_SEND_FAIL, "ble send fail"}},
      historyLimit_(256),
      stop_(false) {
    auto& clock = connectkit::platform::Current().clock();
    mutex_ = clock.NewMutex(false, 0);
    wakeUp_ = clock.NewConditionVariable();
    // One pass, then the thread ends.
    workers_.push_back(connectkit::platform::StartLibraryThread([this] {
        std::unique_lock<connectkit::platform::Mutex> lock(*mutex_);
        while (!stop_ && tasks_.empty()) {
            wakeUp_->Wait(*mutex_);
        }
        if (tasks_.empty()) {
            return;
        }
        ErrorListener* listener = tasks_.front().second;
        if (std::find(listeners_.begin(), listeners_.end(), listener) == listeners_.end()) {
            return;
        }
        auto task = std::move(tasks_.front().first);
        tasks_.pop();
        lock.unlock();
        Deliver(task);
    }));
}

ErrorStatus::~ErrorStatus() {
    if (!stop_) {
        DestroyInstance();
    }
}

void ErrorStatus::DestroyInstance() {
    {
        std::lock_guard<connectkit::platform::Mutex> lock(*mutex_);
        stop_ = true;
    }
    wakeUp_->NotifyAll();
    for (auto& worker : workers_) {
        worker->Join();
    }
}

std::string ErrorStatus::GetErrorString(ConnectErrorCode code) {
    auto row = errorTable_.find(code);
    return row == errorTable_.end() ? "unknow" : row->second;
}

void ErrorStatus::PostNotification(ConnectErrorCode code) {
    {
        std::lock_guard<connectkit::platform::Mutex> lock(*mutex_);
        if (history_.size() >= historyLimit_) {
            history_.pop_front();
        }
        if (code == CONNECT_ERROR_SUCCESS) {
            history_.clear();
        }
        Notification notification{code, GetErrorString(code)};
        history_.push_back(notification);
        for (ErrorListener* listener : listeners_) {
            tasks_.emplace(
                [listener, notification] { listener->OnErrorNotification(notification); },
                listener);
        }
    }
    wakeUp_->NotifyOne();
}

bool ErrorStatus::RegistListener(ErrorListener* listener) {
    std::lock_guard<connectkit::platform::Mutex> lock(*mutex_);
    if (!listener ||
        std::find(listeners_.begin(), listeners_.end(), listener) != listeners_.end()) {
        return false;
    }
    listeners_.push_back(listener);
    return true;
}

bool ErrorStatus::UnregistListener(ErrorListener* listener) {
    std::lock_guard<connectkit::platform::Mutex> lock(*mutex_);
    auto found = std::find(listeners_.begin(), listeners_.end(), listener);
    if (!listener || found == listeners_.end()) {
        return false;
    }
    listeners_.erase(found);
    return true;
}
