// SPDX-License-Identifier: MIT
//
// An adapter that is neither loaded nor unloaded as it should. This program has a library handle of
// its own, whose unload throws and whose construction does what a test wants.
#include <dlfcn.h>
#include <pthread.h>

#include <functional>
#include <stdexcept>

#include "tests/unit/manager/manager_test.h"

namespace {

std::function<void()> g_WhileLoading;

class LoadTrouble : public testing::Test {
  protected:
    LoadTrouble() { KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str()); }
    ~LoadTrouble() override { g_WhileLoading = nullptr; }

    ScratchDirectory m_Scratch{"complete"};
};

} // namespace

JLibrary::JLibrary(const std::string& path) : m_pHandle(nullptr) {
    if (g_WhileLoading) {
        g_WhileLoading();
    }
    m_pHandle = dlopen((path.substr(0, path.rfind('/')) + "/libOSAdapt.so").c_str(), RTLD_NOW);
}

void* JLibrary::resolve(const char* name) const { return dlsym(m_pHandle, name); }

void JLibrary::unload() { throw std::runtime_error("it stays"); }

TEST_F(LoadTrouble, AnUnloadThatFailsIsLoggedAndTheManagerIsGoneAllTheSame) {
    auto* const manager = new CKOVASMgrPort;
    ASSERT_EQ(manager->Init(), 20000);
    ASSERT_EQ(manager->Release(), 20000);
    JLibrary* const library = ManagerProbe::OSAdaptLib(*manager);
    delete manager;
    EXPECT_EQ(CountOf(LogText(m_Scratch), Info("Free OSAdapte.dll fail")), 1);
    delete library; // what could not be unloaded is not freed either
}

TEST_F(LoadTrouble, ALoadThatThrowsIsAFailedOne) {
    g_WhileLoading = [] { throw std::runtime_error("it does not load"); };
    CKOVASMgrPort manager;
    EXPECT_EQ(manager.Init(), 20002);
    EXPECT_EQ(LogText(m_Scratch), Info("Load OSAdapte.dll fail"));
}

// An adapter's start may be where a thread is cancelled.
TEST_F(LoadTrouble, AThreadThatEndsInsideALoadLeavesNoLockBehind) {
    g_WhileLoading = [] { pthread_exit(nullptr); };
    CKOVASMgrPort manager;
    pthread_t thread{};
    const auto initialise = [](void* self) -> void* {
        ADD_FAILURE() << "it returns with " << static_cast<CKOVASMgrPort*>(self)->Init();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, nullptr, initialise, &manager), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_EQ(manager.GetPortState(1), 20053);
    EXPECT_EQ(LogText(m_Scratch), "");
}
