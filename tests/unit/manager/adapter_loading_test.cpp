// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>

#include "tests/unit/manager/manager_test.h"
#include "tests/unit/manager/unresolved.h"

namespace {

namespace fs = std::filesystem;

class AdapterLoading : public ManagerTest {
  protected:
    bool Load() {
        JLibrary* const before = ManagerProbe::OSAdaptLib(m_Manager);
        const bool isComplete = m_Manager.LoadDll();
        if (before != nullptr) {
            Free(before);
        }
        return isComplete;
    }

    static int Resolved() {
        int count = 0;
        for (const Operation& operation : Operations()) {
            count += operation.get() != nullptr ? 1 : 0;
        }
        return count;
    }
};

class LoadingAnIncompleteAdapter : public AdapterLoading,
                                   public testing::WithParamInterface<Operation> {};

} // namespace

TEST_F(AdapterLoading, NothingIsResolvedBefore) {
    EXPECT_EQ(Resolved(), 0);
    EXPECT_FALSE(AllResolved());
    EXPECT_EQ(pfnReleasePortInfo, nullptr);
}

TEST_F(AdapterLoading, FindsEachFunctionByItsName) {
    EXPECT_TRUE(Load());
    for (const Operation& operation : Operations()) {
        EXPECT_EQ(operation.get(), m_Fake.Resolve(operation.symbol)) << operation.symbol;
    }
    EXPECT_TRUE(AllResolved());
    EXPECT_EQ(pfnReleasePortInfo, nullptr) << "reserved";
    EXPECT_EQ(NewLog(), "");
}

INSTANTIATE_TEST_SUITE_P(EachOfTheSeven, LoadingAnIncompleteAdapter,
                         testing::ValuesIn(Operations()), OperationName);

TEST_P(LoadingAnIncompleteAdapter, FailsAndStoresAllOthers) {
    m_Scratch.UseAdapter("lacks_" + GetParam().symbol);
    EXPECT_FALSE(Load());
    EXPECT_EQ(Resolved(), 6);
    EXPECT_EQ(GetParam().get(), nullptr);
    EXPECT_FALSE(AllResolved());
    EXPECT_EQ(NewLog(), "") << "the caller logs";
}

TEST_P(LoadingAnIncompleteAdapter, ForgetsTheFunctionOfAnEarlierOne) {
    ASSERT_TRUE(Load());
    fs::remove("libOSAdapt.so");
    m_Scratch.UseAdapter("lacks_" + GetParam().symbol, "OSAdapt.so"); // loaded under a new name
    EXPECT_FALSE(Load());
    EXPECT_EQ(GetParam().get(), nullptr);
}

TEST_F(AdapterLoading, WithoutAFileFailsAndForgetsAll) {
    ASSERT_TRUE(Load());
    fs::remove("libOSAdapt.so");
    EXPECT_FALSE(Load());
    EXPECT_EQ(Resolved(), 0);
}

TEST_F(AdapterLoading, TakesEachOfTheThreeFileNames) {
    for (const char* name : {"libOSAdapt.so", "OSAdapt.so", "OSAdapt"}) {
        fs::remove("libOSAdapt.so");
        m_Scratch.UseAdapter("complete", name);
        EXPECT_TRUE(Load()) << name;
        fs::remove(name);
    }
}

TEST_F(AdapterLoading, TakesTheFirstFileNameThatExists) {
    m_Scratch.UseAdapter("lacks_OS_ADAPT_OpenPort", "OSAdapt.so");
    m_Scratch.UseAdapter("lacks_OS_ADAPT_ClosePort", "OSAdapt");
    EXPECT_TRUE(Load());
    fs::remove("libOSAdapt.so");
    EXPECT_FALSE(Load());
    EXPECT_EQ(pfnOpenPort, nullptr);
    EXPECT_NE(pfnClosePort, nullptr);
    fs::remove("OSAdapt.so");
    EXPECT_FALSE(Load());
    EXPECT_EQ(pfnClosePort, nullptr);
    EXPECT_NE(pfnOpenPort, nullptr);
}

TEST_F(AdapterLoading, AFileThatDoesNotLoadEndsTheSearch) {
    fs::remove("libOSAdapt.so");
    std::ofstream("libOSAdapt.so") << "no library";
    m_Scratch.UseAdapter("complete", "OSAdapt.so");
    EXPECT_FALSE(Load());
    EXPECT_EQ(Resolved(), 0);
}

TEST_F(AdapterLoading, ADirectoryOfThatNameIsPassedOver) {
    fs::remove("libOSAdapt.so");
    fs::create_directory("libOSAdapt.so");
    m_Scratch.UseAdapter("complete", "OSAdapt.so");
    EXPECT_TRUE(Load());
}

TEST_F(AdapterLoading, FollowsTheCurrentDirectory) {
    fs::create_directory("elsewhere");
    fs::rename("libOSAdapt.so", "elsewhere/libOSAdapt.so");
    EXPECT_FALSE(Load());
    fs::current_path("elsewhere");
    EXPECT_TRUE(Load());
}

TEST_F(AdapterLoading, InADeletedDirectoryFails) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(m_Scratch.Path() + "/gone");
    EXPECT_FALSE(Load());
    EXPECT_EQ(Resolved(), 0);
}
