// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/unit/log/log_test.h"

namespace {

namespace fs = std::filesystem;

class LogFile : public LogTest {
  protected:
    void Fill(std::size_t bytes) const {
        std::ofstream(m_Scratch.LogFile(), std::ios::binary) << std::string(bytes, 'o');
    }
};

// The descriptors that lead to a file.
std::vector<int> DescriptorsOf(const std::string& path) {
    std::vector<int> found;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (fs::read_symlink(entry.path(), ignored) == path) {
            found.push_back(std::stoi(entry.path().filename()));
        }
    }
    return found;
}

TEST_F(LogFile, IsCreated) {
    OpenLog();
    EXPECT_EQ(FileText(m_Scratch.LogFile()), "");
}

TEST_F(LogFile, IsAppendedTo) {
    Fill(5);
    OpenLog();
    INFO_LOG("text");
    EXPECT_EQ(Log(), "ooooo[TIME] INFO:text\n");
}

TEST_F(LogFile, Of102400BytesIsAppendedTo) {
    Fill(102400);
    OpenLog();
    INFO_LOG("text");
    EXPECT_EQ(Log(), std::string(102400, 'o') + "[TIME] INFO:text\n");
}

TEST_F(LogFile, AFileOf102401BytesIsStartedAfresh) {
    Fill(102401);
    OpenLog();
    EXPECT_EQ(FileText(m_Scratch.LogFile()), "");
    INFO_LOG("text");
    EXPECT_EQ(Log(), "[TIME] INFO:text\n");
}

TEST_F(LogFile, GrowsWithoutALimitWhileOpen) {
    OpenLog();
    std::string expected;
    for (int line = 0; line < 50; ++line) {
        ASSERT_EQ(INFO_LOG("%s", std::string(4000, 'x').c_str()), 1);
        expected += "[TIME] INFO:" + std::string(4000, 'x') + "\n";
    }
    EXPECT_EQ(Log(), expected);
}

TEST_F(LogFile, IsAppendedToBehindWhatOthersWrite) {
    OpenLog();
    INFO_LOG("one");
    std::ofstream(m_Scratch.LogFile(), std::ios::app) << "from elsewhere\n";
    INFO_LOG("two");
    EXPECT_EQ(Log(), "[TIME] INFO:one\nfrom elsewhere\n[TIME] INFO:two\n");
}

TEST_F(LogFile, IsClosedOnExec) {
    OpenLog();
    const std::vector<int> descriptors = DescriptorsOf(m_Scratch.LogFile());
    ASSERT_EQ(descriptors.size(), 1U);
    EXPECT_NE(fcntl(descriptors[0], F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(LogFile, IsClosedOnExecWhenStartedAfresh) {
    Fill(102401);
    OpenLog();
    const std::vector<int> descriptors = DescriptorsOf(m_Scratch.LogFile());
    ASSERT_EQ(descriptors.size(), 1U);
    EXPECT_NE(fcntl(descriptors[0], F_GETFD) & FD_CLOEXEC, 0);
}

} // namespace
