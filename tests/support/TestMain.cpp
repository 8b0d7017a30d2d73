#include <gtest/gtest.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include "support/SimWorld.h"

int main(int argc, char** argv) {
    log4cplus::Initializer initializer;
    // Lines go nowhere unless a test captures them.
    log4cplus::Logger::getRoot().addAppender(
        log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
    testing::InitGoogleTest(&argc, argv);
    connectkit::test::Pc();
    return RUN_ALL_TESTS();
}
