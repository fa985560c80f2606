// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "tests/harness/capture_stdout.h"
#include "tests/unit/log/log_test.h"

namespace {

namespace fs = std::filesystem;

class LogDirectory : public LogTest {};

TEST_F(LogDirectory, MayLackASeparatorAtItsEnd) {
    EXPECT_EQ(KOVASMGR_LOG_INIT("log"), 1);
    INFO_LOG("text");
    EXPECT_EQ(LogText("log/KOVASMgr.log"), "[TIME] INFO:text\n");
}

TEST_F(LogDirectory, MayHaveASlashAtItsEnd) {
    EXPECT_EQ(KOVASMGR_LOG_INIT("log/"), 1);
    INFO_LOG("text");
    EXPECT_EQ(LogText("log/KOVASMgr.log"), "[TIME] INFO:text\n");
}

TEST_F(LogDirectory, MayHaveABackslashAtItsEnd) {
    EXPECT_EQ(KOVASMGR_LOG_INIT("log\\"), 1);
    INFO_LOG("text");
    EXPECT_EQ(LogText("log\\KOVASMgr.log"), "[TIME] INFO:text\n");
    EXPECT_TRUE(fs::is_empty("log"));
}

TEST_F(LogDirectory, NullIsTheCurrentOne) {
    EXPECT_EQ(KOVASMGR_LOG_INIT(nullptr), 1);
    INFO_LOG("text");
    EXPECT_EQ(LogText("KOVASMgr.log"), "[TIME] INFO:text\n");
}

TEST_F(LogDirectory, ARelativeOneMeansTheCurrentDirectoryOfThatMoment) {
    EXPECT_EQ(KOVASMGR_LOG_INIT("log"), 1);
    fs::current_path("/");
    INFO_LOG("text");
    EXPECT_EQ(Log(), "[TIME] INFO:text\n");
}

// With another root directory, so that nothing is written into the system's. The process ends in its
// own, as it began.
TEST_F(LogDirectory, AnEmptyOneIsTheRoot) {
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        const int root = open("/", O_RDONLY | O_DIRECTORY);
        if (chroot(m_Scratch.Path().c_str()) != 0) {
            _exit(77);
        }
        const bool isWritten = KOVASMGR_LOG_INIT("") == 1 && INFO_LOG("text") == 1;
        const bool isBack = fchdir(root) == 0 && chroot(".") == 0;
        std::exit(isWritten && isBack ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77) {
        GTEST_SKIP() << "another root directory needs privileges";
    }
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(LogText(m_Scratch.Path() + "/KOVASMgr.log"), "[TIME] INFO:text\n");
}

TEST_F(LogDirectory, ThatDoesNotExistIsAFailureThatIsPrinted) {
    CaptureStdout out;
    EXPECT_EQ(KOVASMGR_LOG_INIT("nowhere"), 0);
    EXPECT_EQ(out.Text(), "Log file open failed!\n");
    EXPECT_EQ(INFO_LOG("text"), 0);
    EXPECT_FALSE(fs::exists("nowhere"));
}

TEST_F(LogDirectory, OpeningPrintsNothing) {
    CaptureStdout out;
    OpenLog();
    INFO_LOG("text");
    EXPECT_EQ(out.Text(), "");
}

TEST_F(LogDirectory, ThatDoesNotFitTheBufferIsRefusedAndTheLogStaysWhereItIs) {
    OpenLog();
    CaptureStdout out;
    EXPECT_EQ(KOVASMGR_LOG_INIT(std::string(5000, 'x').c_str()), 0);
    EXPECT_EQ(KOVASMGR_LOG_INIT(std::string(4500 - 13, 'x').c_str()), 0);
    EXPECT_EQ(out.Text(), "");
    EXPECT_EQ(INFO_LOG("text"), 1);
    EXPECT_EQ(Log(), "[TIME] INFO:text\n");
}

TEST_F(LogDirectory, ThatFitsTheBufferButNotTheSystemIsAFailureThatIsPrinted) {
    CaptureStdout out;
    EXPECT_EQ(KOVASMGR_LOG_INIT(std::string(4499 - 13, 'x').c_str()), 0);
    EXPECT_EQ(out.Text(), "Log file open failed!\n");
}

TEST_F(LogDirectory, WithALongPathIsWrittenIn) {
    std::string directory = m_Scratch.LogDirectory();
    while (directory.size() < 3500) {
        directory += "/" + std::string(100, 'd');
    }
    fs::create_directories(directory);
    ASSERT_EQ(KOVASMGR_LOG_INIT(directory.c_str()), 1);
    INFO_LOG("text");
    EXPECT_EQ(LogText(directory + "/KOVASMgr.log"), "[TIME] INFO:text\n");
}

} // namespace
