// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>

#include "tests/harness/capture_stdout.h"
#include "tests/harness/process_counts.h"
#include "tests/unit/log/log_test.h"

namespace {

namespace fs = std::filesystem;

class LogReinit : public LogTest {};

TEST_F(LogReinit, TheSameDirectoryIsNeitherReopenedNorTruncated) {
    OpenLog();
    INFO_LOG("one");
    std::ofstream(m_Scratch.LogFile(), std::ios::app) << std::string(102401, 'o') << '\n';
    const std::size_t descriptors = OpenDescriptors();
    EXPECT_EQ(KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str()), 1);
    INFO_LOG("two");
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(Log(), "[TIME] INFO:one\n" + std::string(102401, 'o') + "\n[TIME] INFO:two\n");
}

TEST_F(LogReinit, TheSameDirectoryIsNotReopenedEvenIfTheFileIsGone) {
    OpenLog();
    fs::remove(m_Scratch.LogFile());
    EXPECT_EQ(KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str()), 1);
    EXPECT_FALSE(fs::exists(m_Scratch.LogFile()));
}

TEST_F(LogReinit, TheSameDirectoryWrittenOtherwiseIsAnotherPath) {
    OpenLog();
    INFO_LOG("one");
    EXPECT_EQ(KOVASMGR_LOG_INIT((m_Scratch.LogDirectory() + "/./").c_str()), 1);
    INFO_LOG("two");
    EXPECT_EQ(Log(), "[TIME] INFO:one\n[TIME] INFO:two\n");
}

TEST_F(LogReinit, AnotherDirectoryTakesTheLinesFromThenOn) {
    OpenLog();
    INFO_LOG("one");
    fs::create_directory("other");
    EXPECT_EQ(KOVASMGR_LOG_INIT("other"), 1);
    INFO_LOG("two");
    EXPECT_EQ(Log(), "[TIME] INFO:one\n");
    EXPECT_EQ(LogText("other/KOVASMgr.log"), "[TIME] INFO:two\n");
}

TEST_F(LogReinit, AnotherPathDropsTheOldStreamUnclosed) {
    OpenLog();
    const std::size_t descriptors = OpenDescriptors();
    EXPECT_EQ(INIT_LOG("other.log", true), 1);
    EXPECT_EQ(OpenDescriptors(), descriptors + 1);
}

TEST_F(LogReinit, AnEmptyPathIsAFailureThatClosesTheLog) {
    OpenLog();
    CaptureStdout out;
    EXPECT_EQ(INIT_LOG("", true), 0);
    EXPECT_EQ(out.Text(), "Log file open failed!\n");
    EXPECT_EQ(INFO_LOG("lost"), 0);
    EXPECT_EQ(Log(), "");
}

TEST_F(LogReinit, AFailureClosesTheLog) {
    OpenLog();
    CaptureStdout out;
    EXPECT_EQ(INIT_LOG("nowhere/other.log", true), 0);
    EXPECT_EQ(out.Text(), "Log file open failed!\n");
    EXPECT_EQ(INFO_LOG("lost"), 0);
    EXPECT_EQ(Log(), "");
}

TEST_F(LogReinit, AFailureIsSuccessWhenRepeatedButStillNothingIsWritten) {
    CaptureStdout out;
    EXPECT_EQ(INIT_LOG("nowhere/other.log", true), 0);
    EXPECT_EQ(INIT_LOG("nowhere/other.log", true), 1);
    EXPECT_EQ(out.Text(), "Log file open failed!\n");
    EXPECT_EQ(INFO_LOG("lost"), 0);
}

TEST_F(LogReinit, AFailureIsRecoveredFromByAnotherPath) {
    CaptureStdout out;
    EXPECT_EQ(INIT_LOG("nowhere/other.log", true), 0);
    OpenLog();
    EXPECT_EQ(INFO_LOG("text"), 1);
    EXPECT_EQ(Log(), "[TIME] INFO:text\n");
}

TEST_F(LogReinit, ANullPathChangesNothing) {
    EXPECT_EQ(INIT_LOG(nullptr, true), 0);
    EXPECT_EQ(INIT_LOG(nullptr, false), 0);
    OpenLog();
    EXPECT_EQ(INIT_LOG(nullptr, true), 0);
    EXPECT_EQ(INIT_LOG(nullptr, false), 0);
    EXPECT_EQ(INFO_LOG("text"), 1);
    EXPECT_EQ(Log(), "[TIME] INFO:text\n");
}

TEST_F(LogReinit, ARelativeNameIsTheFileAtFirstAndIsAppendedToThePathThereafter) {
    EXPECT_EQ(INIT_LOG("name", false), 1);
    INFO_LOG("one");
    EXPECT_EQ(INIT_LOG("name", false), 1);
    INFO_LOG("two");
    EXPECT_EQ(LogText("name"), "[TIME] INFO:one\n");
    EXPECT_EQ(LogText("namename"), "[TIME] INFO:two\n");
}

TEST_F(LogReinit, TheNullDirectoryTwiceDoublesTheName) {
    EXPECT_EQ(KOVASMGR_LOG_INIT(nullptr), 1);
    EXPECT_EQ(KOVASMGR_LOG_INIT(nullptr), 1);
    INFO_LOG("text");
    EXPECT_EQ(LogText("KOVASMgr.log"), "");
    EXPECT_EQ(LogText("KOVASMgr.logKOVASMgr.log"), "[TIME] INFO:text\n");
}

TEST_F(LogReinit, ARelativeNameIsAppendedToAFullPath) {
    OpenLog();
    EXPECT_EQ(INIT_LOG(".old", false), 1);
    INFO_LOG("text");
    EXPECT_EQ(LogText(m_Scratch.LogFile() + ".old"), "[TIME] INFO:text\n");
}

TEST_F(LogReinit, AnEmptyNameIsTheUnchangedPath) {
    EXPECT_EQ(INIT_LOG("", false), 1);
    EXPECT_EQ(INIT_LOG("", true), 1);
    EXPECT_EQ(INFO_LOG("lost"), 0);
    OpenLog();
    EXPECT_EQ(INIT_LOG("", false), 1);
    EXPECT_EQ(INFO_LOG("text"), 1);
    EXPECT_EQ(Log(), "[TIME] INFO:text\n");
}

} // namespace
