// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "tests/unit/log/log_test.h"

namespace {

namespace fs = std::filesystem;

class LogMode : public LogTest {
  protected:
    static mode_t ModeOf(const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    // Opens the log in a directory of this name and shows that nothing of the name was executed.
    void ExpectModeIn(const std::string& directory) {
        fs::create_directory(directory);
        ASSERT_EQ(KOVASMGR_LOG_INIT(directory.c_str()), 1);
        EXPECT_EQ(ModeOf(directory + "/KOVASMgr.log"), 0777U);
        const auto entries = std::distance(fs::directory_iterator("."), fs::directory_iterator());
        EXPECT_EQ(entries, 2) << "the log directory and " << directory;
    }
};

TEST_F(LogMode, IsReadableAndWritableForEveryone) {
    const mode_t before = umask(077);
    OpenLog();
    umask(before);
    EXPECT_EQ(ModeOf(m_Scratch.LogFile()), 0777U);
}

TEST_F(LogMode, IsSetOnAFileThatIsThere) {
    OpenLog();
    chmod(m_Scratch.LogFile().c_str(), 0600);
    ASSERT_EQ(INIT_LOG("other.log", true), 1);
    OpenLog();
    EXPECT_EQ(ModeOf(m_Scratch.LogFile()), 0777U);
}

TEST_F(LogMode, IsSetInADirectoryNamedLikeAShellCommand) { ExpectModeIn("a $(touch x) \"b\" `c`"); }

TEST_F(LogMode, IsSetInADirectoryNamedWithBackquotes) { ExpectModeIn("`touch x`"); }

TEST_F(LogMode, IsSetInADirectoryThatEndsTheQuotation) { ExpectModeIn("\"; touch x; \""); }

TEST_F(LogMode, IsSetInADirectoryWithBackslashes) { ExpectModeIn("a\\\\b\\$(touch x)\\c"); }

TEST_F(LogMode, IsSetInADirectoryWithALineEnd) { ExpectModeIn("a\ntouch x"); }

TEST_F(LogMode, IsSetInADirectoryWithAVariable) { ExpectModeIn("$HOME ${HOME} !! * ?"); }

TEST_F(LogMode, IsSetInADirectoryNamedLikeAnOption) { ExpectModeIn("-R"); }

TEST_F(LogMode, IsSetInADirectoryNamedLikeALongOption) { ExpectModeIn("--help"); }

TEST_F(LogMode, IsSetOnAFileNamedLikeAnOption) {
    ASSERT_EQ(INIT_LOG("-x $(touch y).log", true), 1);
    EXPECT_EQ(ModeOf("./-x $(touch y).log"), 0777U);
    EXPECT_FALSE(fs::exists("y"));
}

} // namespace
