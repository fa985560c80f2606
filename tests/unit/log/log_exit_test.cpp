// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <thread>

#include "tests/unit/log/log_test.h"

namespace {

enum Status { kAllWell = 0, kLineRefused = 3, kLineWritten = 4 };

// Constructed before everything else of the program and therefore destroyed last, after the library
// has closed its file.
struct LastOfAll {
    ~LastOfAll() {
        if (m_IsArmed && INFO_LOG("too late") != 0) {
            std::_Exit(kLineWritten);
        }
    }
    bool m_IsArmed = false;
};
LastOfAll g_LastOfAll __attribute__((init_priority(101)));

void LogOnce() {
    if (INFO_LOG("in time") != 1) {
        std::_Exit(kLineRefused);
    }
}

class LogAtExit : public LogTest {};

TEST_F(LogAtExit, TakesTheLinesOfHandlersThatTheHostRegistered) {
    OpenLog();
    EXPECT_EXIT(
        {
            std::atexit(LogOnce);
            std::exit(kAllWell);
        },
        testing::ExitedWithCode(kAllWell), "");
    EXPECT_EQ(Log(), "[TIME] INFO:in time\n");
}

TEST_F(LogAtExit, DropsTheLinesOfDestructorsThatComeLater) {
    OpenLog();
    EXPECT_EXIT(
        {
            g_LastOfAll.m_IsArmed = true;
            std::exit(kAllWell);
        },
        testing::ExitedWithCode(kAllWell), "");
    EXPECT_EQ(Log(), "");
}

TEST_F(LogAtExit, AThreadMayGoOnLogging) {
    OpenLog();
    EXPECT_EXIT(
        {
            g_LastOfAll.m_IsArmed = true;
            std::thread([] {
                for (;;) {
                    INFO_LOG("going on");
                }
            }).detach();
            while (Log().empty()) {
                std::this_thread::yield();
            }
            std::exit(kAllWell);
        },
        testing::ExitedWithCode(kAllWell), "");
}

} // namespace
