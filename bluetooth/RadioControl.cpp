#include "bluetooth/RadioControl.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ModuleLifetime.h"

namespace connectkit::bluetooth {

// Every success subscribes once more: the token is not kept and nothing
// removes the handler, so the module stays loaded from the first one on.
bool HoldAndSubscribe(platform::RadioKind kind, RadioHolder& holder,
                      platform::Radio::StateHandler handler, const char* function) {
    if (!RadioDeviceMgr::GetInstance()->FindRadio(kind, &holder)) {
        return false;
    }
    auto radio = holder.Get();
    if (!radio) {
        return false;
    }
    platform::KeepModuleLoaded();
    try {
        radio->AddStateChanged(std::move(handler));
        return true;
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
        return false;
    }
}

}  // namespace connectkit::bluetooth
