// What a module of the suite does with connectkit: configure the process's
// logging (the library's lines follow it), listen for connection errors, ask
// for the hotspot and report what came back. Where there is no Wi-Fi Direct
// (under Wine) the hotspot fails with a result code; that is an answer too,
// and the program still ends cleanly. On Linux the library runs on the
// simulated PC, whose default machine opens the hotspot.

#include <log4cplus/consoleappender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>

#include <connectkit/ErrorStatus.h>
#include <connectkit/SoftAPManager.h>

#include <cstdio>
#include <memory>

namespace {

class PrintingListener : public ErrorListener {
public:
    void OnErrorNotification(std::pair<ConnectErrorCode, std::string> notification) override {
        std::printf("connection error 0x%08x: %s\n", static_cast<unsigned>(notification.first),
                    notification.second.c_str());
    }
};

void ConfigureLogging() {
    log4cplus::SharedAppenderPtr console(new log4cplus::ConsoleAppender(true, true));
    console->setLayout(
        std::make_unique<log4cplus::PatternLayout>(LOG4CPLUS_TEXT("[log] %-5p %m%n")));
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.addAppender(console);
    root.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
}

}  // namespace

int main() {
    log4cplus::Initializer initializer;
    ConfigureLogging();

    PrintingListener listener;
    ErrorStatus* errors = ErrorStatus::GetInstance();
    errors->RegistListener(&listener);

    SoftAPInfo hotspot;
    int result = SystemCreateSoftAP(hotspot);
    if (result == 0) {
        std::printf("hotspot %s, pass phrase %s, channel %u, address %s\n", hotspot.ssid.c_str(),
                    hotspot.passphrase.c_str(), hotspot.channel, hotspot.ip.c_str());
        SystemDestroySoftAP(hotspot);
    } else {
        std::printf("no hotspot: SystemCreateSoftAP returned %d, last error %d\n", result,
                    GetSoftApError());
    }

    errors->UnregistListener(&listener);
    errors->DestroyInstance();
    std::printf("done\n");
    return 0;
}
