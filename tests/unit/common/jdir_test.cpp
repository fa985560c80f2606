// SPDX-License-Identifier: MIT
#include "common/jdir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/harness/scratch_directory.h"

namespace {

namespace fs = std::filesystem;

class Directory : public testing::Test {
  protected:
    ScratchDirectory m_Scratch;
};

TEST_F(Directory, ExistsWithAndWithoutASeparatorBehind) {
    EXPECT_TRUE(JDir(m_Scratch.Path()).exists());
    EXPECT_TRUE(JDir(m_Scratch.Path() + "/").exists());
    EXPECT_TRUE(JDir(".").exists());
}

TEST_F(Directory, DoesNotExistWhenNothingIsThere) {
    EXPECT_FALSE(JDir(m_Scratch.Path() + "/nothing").exists());
    EXPECT_FALSE(JDir("nothing").exists());
}

TEST_F(Directory, AnEmptyNameDoesNotExist) {
    EXPECT_FALSE(JDir("").exists());
    EXPECT_FALSE(JDir().exists());
}

TEST_F(Directory, AFileIsNone) {
    std::ofstream("file") << "text";
    EXPECT_FALSE(JDir("file").exists());
    EXPECT_FALSE(JDir("file/below").exists());
}

TEST_F(Directory, LinksAreFollowed) {
    fs::create_symlink("log", "link");
    fs::create_symlink("nowhere", "dangling");
    EXPECT_TRUE(JDir("link").exists());
    EXPECT_FALSE(JDir("dangling").exists());
}

TEST_F(Directory, ANameTooLongForTheSystemDoesNotExistAndThrowsNothing) {
    EXPECT_FALSE(JDir(std::string(5000, 'x')).exists());
    std::string deep = m_Scratch.Path();
    while (deep.size() < 5000) {
        deep += "/.";
    }
    EXPECT_FALSE(JDir(deep).exists());
}

TEST_F(Directory, TheCurrentOneIsReadAnew) {
    EXPECT_EQ(JDir::getCurrentPath(), m_Scratch.Path());
    fs::current_path("log");
    EXPECT_EQ(JDir::getCurrentPath(), m_Scratch.LogDirectory());
}

TEST_F(Directory, ADeletedCurrentOneGivesAnEmptyPath) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(m_Scratch.Path() + "/gone");
    EXPECT_EQ(JDir::getCurrentPath(), "");
}

TEST_F(Directory, PartsAreSeparatedByASlash) { EXPECT_EQ(JDir::separator(), '/'); }

} // namespace
