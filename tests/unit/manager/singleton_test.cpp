// SPDX-License-Identifier: MIT
#include <filesystem>

#include "tests/unit/manager/manager_test.h"

namespace {

// Has no manager, and no hold on the adapter of its own.
class Singleton : public testing::Test {
  protected:
    Singleton() { KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str()); }
    ~Singleton() override { CKOVASMgrPort::ReleaseInstance(); }

    ScratchDirectory m_Scratch{"complete"};
};

} // namespace

TEST_F(Singleton, IsMadeAtTheFirstCallAndStaysTheSame) {
    CKOVASMgrPort* const manager = CKOVASMgrPort::GetInstance();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(CKOVASMgrPort::GetInstance(), manager);
    EXPECT_EQ(LogText(m_Scratch), "");
}

TEST_F(Singleton, ReleasingNoneDoesNothing) {
    CKOVASMgrPort::ReleaseInstance();
    CKOVASMgrPort::ReleaseInstance();
    EXPECT_EQ(LogText(m_Scratch), "");
}

TEST_F(Singleton, ReleasingItTwiceReleasesItOnce) {
    CKOVASMgrPort::GetInstance();
    CKOVASMgrPort::ReleaseInstance();
    CKOVASMgrPort::ReleaseInstance();
    EXPECT_EQ(LogText(m_Scratch), Info("ENTER CKOVASMgrPort::Release()"));
}

TEST_F(Singleton, ReleasingItReleasesTheManager) {
    ASSERT_EQ(CKOVASMgrPort::GetInstance()->Init(), 20000);
    CKOVASMgrPort::ReleaseInstance();
    const std::string log = LogText(m_Scratch);
    EXPECT_EQ(CountOf(log, Info("ENTER CKOVASMgrPort::Release()")), 1);
    EXPECT_EQ(CountOf(log, Info("LEAVE CKOVASMgrPort::Release()")), 1);
}

TEST_F(Singleton, TheNextOneIsFresh) {
    ASSERT_EQ(CKOVASMgrPort::GetInstance()->Init(), 20000);
    ManagerProbe::LastPortID(*CKOVASMgrPort::GetInstance()) = 5;
    CKOVASMgrPort::ReleaseInstance();
    EXPECT_EQ(ManagerProbe::LastPortID(*CKOVASMgrPort::GetInstance()), 0);
    EXPECT_EQ(ManagerProbe::IsInit(*CKOVASMgrPort::GetInstance()), 0);
}

TEST_F(Singleton, TheAdapterIsUnloadedByTheDestructorAndNotBefore) {
    ASSERT_FALSE(FakeAdapterLibrary::IsLoaded());
    ASSERT_EQ(CKOVASMgrPort::GetInstance()->Init(), 20000);
    EXPECT_TRUE(FakeAdapterLibrary::IsLoaded());
    ASSERT_EQ(CKOVASMgrPort::GetInstance()->Release(), 20000);
    EXPECT_TRUE(FakeAdapterLibrary::IsLoaded());
    CKOVASMgrPort::ReleaseInstance();
    EXPECT_FALSE(FakeAdapterLibrary::IsLoaded());
}

TEST_F(Singleton, ReleasingAReleasedManagerDestroysIt) {
    ASSERT_EQ(CKOVASMgrPort::GetInstance()->Init(), 20000);
    ASSERT_EQ(CKOVASMgrPort::GetInstance()->Release(), 20000);
    const std::string before = LogText(m_Scratch);
    CKOVASMgrPort::ReleaseInstance();
    EXPECT_EQ(LogText(m_Scratch), before + Info("ENTER CKOVASMgrPort::Release()"));
}
