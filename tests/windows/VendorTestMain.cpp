// The vendor driver tests run on the Windows backend, so unlike the other
// test programs this one installs no simulated PC.

#include <gtest/gtest.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

int main(int argc, char** argv) {
    log4cplus::Initializer initializer;
    log4cplus::Logger::getRoot().addAppender(
        log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
