#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "connectkit/ErrorStatus.h"
#include "platform/Platform.h"
#include "support/ErrorRecorder.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

// Reaches the parts of ErrorStatus that its exported interface keeps to
// itself, and makes fresh instances so every test sees a new worker.
class ErrorStatusInspector {
public:
    static std::unique_ptr<ErrorStatus> Fresh() {
        return std::unique_ptr<ErrorStatus>(new ErrorStatus());
    }
    static std::vector<std::pair<ConnectErrorCode, std::string>> History(ErrorStatus& status) {
        std::lock_guard<connectkit::platform::Mutex> lock(*status.mutex_);
        return {status.history_.begin(), status.history_.end()};
    }
    static size_t Queued(ErrorStatus& status) {
        std::lock_guard<connectkit::platform::Mutex> lock(*status.mutex_);
        return status.tasks_.size();
    }
};

namespace connectkit::test {
namespace {

using Notification = ErrorRecorder::Notification;

class ErrorStatusTest : public SimTest {};

// Without listeners a posting is recorded but not queued, so the first one
// after registering is what reaches the listener, once: the worker makes one
// pass. Destroying returns at once, whether the worker never delivered, has
// delivered and ended, or is destroyed twice.
TEST_F(ErrorStatusTest, OnlyTheFirstNotificationIsDeliveredAndDestroyReturnsAtOnce) {
    const uint64_t before = Now();
    ErrorStatusInspector::Fresh()->DestroyInstance();
    auto status = ErrorStatusInspector::Fresh();
    status->PostNotification(CONNECT_ERROR_APCHANNEL_GO_ABORT);
    EXPECT_EQ(ErrorStatusInspector::Queued(*status), 0u);
    ErrorRecorder listener;
    EXPECT_FALSE(status->RegistListener(nullptr));
    EXPECT_TRUE(status->RegistListener(&listener));
    EXPECT_FALSE(status->RegistListener(&listener));
    status->PostNotification(CONNECT_ERROR_GO_ALREADY_EXIST);
    status->PostNotification(CONNECT_ERROR_BLE_SEND_FAIL);

    ASSERT_TRUE(listener.WaitForOne());
    EXPECT_FALSE(listener.WaitForOne(5000));
    EXPECT_EQ(listener.Received(),
              std::vector{Notification(CONNECT_ERROR_GO_ALREADY_EXIST, "go already exist")});
    // The second posting is still recorded and queued.
    EXPECT_EQ(ErrorStatusInspector::History(*status).size(), 3u);
    EXPECT_EQ(ErrorStatusInspector::Queued(*status), 1u);
    status->DestroyInstance();
    status->DestroyInstance();
    EXPECT_EQ(Now() - before, 5000u) << "only the wait for a second delivery takes time";
    EXPECT_FALSE(status->UnregistListener(nullptr));
    EXPECT_TRUE(status->UnregistListener(&listener));
    EXPECT_FALSE(status->UnregistListener(&listener));
    // Codes the table does not name.
    EXPECT_EQ(status->GetErrorString(CONNECT_ERROR_SET_5G_CHANNEL_FAILED), "unknow");
    EXPECT_EQ(status->GetErrorString(static_cast<ConnectErrorCode>(0xDEADBEEF)), "unknow");
}

TEST_F(ErrorStatusTest, HistoryIsBoundedAndClearedBySuccess) {
    auto status = ErrorStatusInspector::Fresh();
    for (uint32_t i = 1; i <= 257; ++i) {
        status->PostNotification(static_cast<ConnectErrorCode>(i));
    }
    auto history = ErrorStatusInspector::History(*status);
    ASSERT_EQ(history.size(), 256u);
    EXPECT_EQ(history.front().first, 2u);
    EXPECT_EQ(history.back().first, 257u);

    status->PostNotification(CONNECT_ERROR_SUCCESS);
    history = ErrorStatusInspector::History(*status);
    ASSERT_EQ(history.size(), 1u);
    EXPECT_EQ(history[0], Notification(CONNECT_ERROR_SUCCESS, "success"));
}

// A host's listener that throws on our worker; the second kind first calls
// back in: unregisters itself, posts, and stops the worker it runs on.
class ThrowingListener : public ErrorRecorder {
public:
    explicit ThrowingListener(ErrorStatus* stopsItself) : status_(stopsItself) {}
    void OnErrorNotification(Notification notification) override {
        ErrorRecorder::OnErrorNotification(notification);
        if (!status_) {
            throw std::runtime_error("listener failed");
        }
        status_->UnregistListener(this);
        status_->PostNotification(CONNECT_ERROR_SUCCESS);
        status_->DestroyInstance();
        throw 42;
    }

private:
    ErrorStatus* status_;
};

TEST_F(ErrorStatusTest, WhatAListenerThrowsIsLoggedAndNothingWaitsForItself) {
    for (bool stopsItself : {false, true}) {
        SCOPED_TRACE(stopsItself ? "calls back in, then throws" : "throws");
        LogCapture log;
        auto status = ErrorStatusInspector::Fresh();
        ThrowingListener listener(stopsItself ? status.get() : nullptr);
        status->RegistListener(&listener);
        status->PostNotification(CONNECT_ERROR_GO_ALREADY_EXIST);
        ASSERT_TRUE(listener.WaitForOne());
        // Returns once the worker has ended, after the throw was caught.
        status->DestroyInstance();
        EXPECT_EQ(log.Count(L"an error listener threw"), 1u);
        EXPECT_EQ(status->UnregistListener(&listener), !stopsItself);
        status->PostNotification(CONNECT_ERROR_BLE_SEND_FAIL);
        EXPECT_EQ(ErrorStatusInspector::History(*status).size(), 2u);
    }
}

}  // namespace
}  // namespace connectkit::test
