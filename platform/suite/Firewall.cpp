#include "platform/suite/Firewall.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/Platform.h"

bool Firewall::RemoveDHCPRules() {
    uint32_t error = connectkit::platform::Current().firewall().RemoveDhcpRules();
    if (error != 0) {
        LogErrorFun("Firewall::RemoveDHCPRules failed, error %u", error);
        return false;
    }
    return true;
}
