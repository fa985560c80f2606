// SPDX-License-Identifier: MIT
#include "common/jlibrary.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/scratch_directory.h"
#include "tests/unit/common/loaded_adapter.h"

namespace {

namespace fs = std::filesystem;

class Library : public testing::Test {
  protected:
    std::string Load() const {
        JLibrary library(m_Scratch.Path() + "/OSAdapt");
        const std::string loaded = LoadedAdapter(library);
        library.unload();
        return loaded;
    }

    ScratchDirectory m_Scratch;
};

TEST_F(Library, IsLookedForByThreeNamesInTheirOrder) {
    m_Scratch.UseAdapter("lacks_OS_ADAPT_Read", "libOSAdapt.so");
    m_Scratch.UseAdapter("lacks_OS_ADAPT_Write", "OSAdapt.so");
    m_Scratch.UseAdapter("lacks_OS_ADAPT_OpenPort", "OSAdapt");
    EXPECT_EQ(Load(), "lacks_OS_ADAPT_Read");
    fs::remove("libOSAdapt.so");
    EXPECT_EQ(Load(), "lacks_OS_ADAPT_Write");
    fs::remove("OSAdapt.so");
    EXPECT_EQ(Load(), "lacks_OS_ADAPT_OpenPort");
    fs::remove("OSAdapt");
    EXPECT_EQ(Load(), "nothing");
}

TEST_F(Library, ADirectoryOfItsNameIsSkipped) {
    fs::create_directory("libOSAdapt.so");
    m_Scratch.UseAdapter("complete", "OSAdapt.so");
    EXPECT_EQ(Load(), "complete");
}

TEST_F(Library, ALinkThatLeadsNowhereIsSkipped) {
    fs::create_symlink("nowhere", "libOSAdapt.so");
    m_Scratch.UseAdapter("complete", "OSAdapt.so");
    EXPECT_EQ(Load(), "complete");
}

TEST_F(Library, LinksAreFollowed) {
    fs::copy_file(ScratchDirectory::AdapterFile("complete"), "elsewhere");
    fs::create_symlink("elsewhere", "libOSAdapt.so");
    EXPECT_EQ(Load(), "complete");
}

TEST_F(Library, AFileThatDoesNotLoadEndsTheSearch) {
    std::ofstream("libOSAdapt.so") << "no library";
    m_Scratch.UseAdapter("complete", "OSAdapt.so");
    EXPECT_EQ(Load(), "nothing");
}

TEST_F(Library, ResolvesNothingThatItDoesNotHave) {
    m_Scratch.UseAdapter("lacks_OS_ADAPT_Read");
    JLibrary library(m_Scratch.Path() + "/OSAdapt");
    EXPECT_NE(library.resolve("OS_ADAPT_OpenPort"), nullptr);
    EXPECT_EQ(library.resolve("OS_ADAPT_Read"), nullptr);
    EXPECT_EQ(library.resolve(""), nullptr);
    library.unload();
}

TEST_F(Library, ThatIsNotThereResolvesNothingFromElsewhere) {
    const JLibrary library(m_Scratch.Path() + "/OSAdapt");
    EXPECT_EQ(library.resolve("OS_ADAPT_OpenPort"), nullptr);
    EXPECT_EQ(library.resolve("malloc"), nullptr);
}

TEST_F(Library, KeepsItsSymbolsToItself) {
    m_Scratch.UseAdapter("complete");
    JLibrary library(m_Scratch.Path() + "/OSAdapt");
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "FakeAdapter_Control"), nullptr);
    library.unload();
}

TEST_F(Library, IsGoneAfterUnloading) {
    m_Scratch.UseAdapter("complete");
    JLibrary library(m_Scratch.Path() + "/OSAdapt");
    EXPECT_TRUE(FakeAdapterLibrary::IsLoaded());
    library.unload();
    EXPECT_FALSE(FakeAdapterLibrary::IsLoaded());
    EXPECT_EQ(library.resolve("OS_ADAPT_OpenPort"), nullptr);
}

TEST_F(Library, GivesUpOneHoldHoweverOftenItIsUnloaded) {
    m_Scratch.UseAdapter("complete");
    const FakeAdapterLibrary other;
    JLibrary library(m_Scratch.Path() + "/OSAdapt");
    library.unload();
    EXPECT_EQ(library.resolve("OS_ADAPT_OpenPort"), nullptr);
    library.unload();
    EXPECT_TRUE(FakeAdapterLibrary::IsLoaded());
    EXPECT_EQ(library.resolve("OS_ADAPT_OpenPort"), nullptr);
}

TEST_F(Library, StaysLoadedWhenTheObjectGoes) {
    m_Scratch.UseAdapter("complete");
    { const JLibrary library(m_Scratch.Path() + "/OSAdapt"); }
    EXPECT_TRUE(FakeAdapterLibrary::IsLoaded());
}

TEST_F(Library, IsLookedForInThePathsDirectoryNotInTheCurrentOne) {
    m_Scratch.UseAdapter("complete");
    fs::create_directory("other");
    JLibrary library(m_Scratch.Path() + "/other/OSAdapt");
    EXPECT_EQ(LoadedAdapter(library), "nothing");
}

} // namespace
