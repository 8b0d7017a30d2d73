// `errors list` prints the error table; `errors post` registers a listener,
// posts codes, and shows what the listener received. The error status worker
// delivers only the first notification of the process, so posting several
// codes shows that only the first arrives.

#include <cstdio>
#include <iomanip>
#include <mutex>
#include <sstream>
#include <vector>

#include "Context.h"
#include "commands/Commands.h"
#include "connectkit/ErrorStatus.h"
#include "platform/Platform.h"

namespace connectkit::tool {
namespace {

constexpr ConnectErrorCode kTableCodes[] = {
    CONNECT_ERROR_SUCCESS, CONNECT_ERROR_APCHANNEL_GO_ABORT, CONNECT_ERROR_GO_ALREADY_EXIST,
    CONNECT_ERROR_SET_5G_CHANNEL_FAILED, CONNECT_ERROR_BLE_SEND_FAIL};

std::string Hex(uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08X", code);
    return text;
}

bool ParseCode(const std::string& text, uint32_t& code) {
    if (text.empty() || text[0] == '-' || text[0] == '+') {
        return false;
    }
    try {
        size_t used = 0;
        unsigned long long value = std::stoull(text, &used, 0);
        if (used != text.size() || value > 0xFFFFFFFFull) {
            return false;
        }
        code = static_cast<uint32_t>(value);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// Records what arrives and wakes the waiting command.
class RecordingListener final : public ErrorListener {
public:
    RecordingListener() : arrived_(platform::Current().clock().NewSemaphore(0, 1024)) {}

    void OnErrorNotification(std::pair<ConnectErrorCode, std::string> notification) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            received_.push_back(std::move(notification));
        }
        if (arrived_) {
            arrived_->Release();
        }
    }

    // Waits up to `waitMs` for each further notification.
    std::vector<std::pair<ConnectErrorCode, std::string>> Collect(size_t expected,
                                                                  uint32_t waitMs) {
        for (size_t i = 0; i < expected && arrived_; ++i) {
            if (arrived_->Wait(waitMs) != platform::WaitResult::Signaled) {
                break;
            }
        }
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

private:
    std::unique_ptr<platform::Semaphore> arrived_;
    std::mutex mutex_;
    std::vector<std::pair<ConnectErrorCode, std::string>> received_;
};

void List(Context& context) {
    auto* status = ErrorStatus::GetInstance();
    std::ostringstream text;
    nlohmann::json rows = nlohmann::json::array();
    for (ConnectErrorCode code : kTableCodes) {
        std::string message = status->GetErrorString(code);
        text << Hex(code) << "  " << message << '\n';
        rows.push_back({{"code", code}, {"hex", Hex(code)}, {"text", message}});
    }
    context.Print(text.str(), {{"errors", rows}});
}

void Post(Context& context, const std::vector<std::string>& texts, uint32_t waitMs) {
    std::vector<ConnectErrorCode> codes;
    for (const auto& text : texts) {
        uint32_t code = 0;
        if (!ParseCode(text, code)) {
            context.Fail(kExitUsage, "'" + text + "' is not an error code (decimal or 0x hex)");
            return;
        }
        codes.push_back(static_cast<ConnectErrorCode>(code));
    }
    auto* status = ErrorStatus::GetInstance();
    RecordingListener listener;
    status->RegistListener(&listener);
    for (ConnectErrorCode code : codes) {
        status->PostNotification(code);
    }
    auto received = listener.Collect(codes.size(), waitMs);
    status->UnregistListener(&listener);
    status->DestroyInstance();

    std::ostringstream text;
    nlohmann::json posted = nlohmann::json::array();
    for (size_t i = 0; i < codes.size(); ++i) {
        bool delivered = i < received.size();
        std::string message = status->GetErrorString(codes[i]);
        text << "posted " << Hex(codes[i]) << " \"" << message << "\": ";
        if (delivered) {
            text << "listener received (" << Hex(received[i].first) << ", \"" << received[i].second
                 << "\")\n";
        } else {
            text << "nothing delivered within " << waitMs << " ms\n";
        }
        posted.push_back({{"code", codes[i]}, {"text", message}, {"delivered", delivered}});
    }
    context.Print(text.str(), {{"posted", posted}, {"waitMs", waitMs}});
}

}  // namespace

void AddErrorsCommand(CLI::App& app, Context& context) {
    auto* errors = app.add_subcommand(
        "errors",
        "Connection error notifications: the table (list), delivery to a listener (post)");
    errors->require_subcommand(1);

    auto* list = errors->add_subcommand("list", "Print the error table: code and text");
    list->callback([&context] { List(context); });

    auto* post = errors->add_subcommand(
        "post",
        "Register a listener, post CODE..., and print what the listener received. The worker "
        "delivers only the first notification of a process; later ones are recorded, not sent.");
    static std::vector<std::string> codes;
    static uint32_t waitMs = 2000;
    post->add_option("CODE", codes, "Error codes, decimal or 0x hex")->required();
    post->add_option("--wait-ms", waitMs, "How long to wait for each delivery")
        ->capture_default_str();
    post->callback([&context] { Post(context, codes, waitMs); });
}

}  // namespace connectkit::tool
