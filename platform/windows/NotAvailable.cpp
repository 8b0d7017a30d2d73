#include "platform/windows/NotAvailable.h"

#include <mutex>
#include <set>
#include <string>

#include "SDK/Util/LogTool/LogTool.h"

namespace connectkit::win {

void SayNotAvailable(const char* port) {
    static std::mutex mutex;
    static std::set<std::string> said;
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (!said.insert(port).second) {
            return;
        }
    }
    LogWarnFun("[WindowsBackend] %s is not available in this build; it answers not implemented",
               port);
}

}  // namespace connectkit::win
