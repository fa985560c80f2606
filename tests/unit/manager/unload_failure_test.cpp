// SPDX-License-Identifier: MIT
//
// An adapter that cannot be unloaded. This program has a library handle of its own, whose unload
// throws.
#include <dlfcn.h>

#include <stdexcept>

#include "tests/unit/manager/manager_test.h"

JLibrary::JLibrary(const std::string& path)
    : m_pHandle(dlopen((path.substr(0, path.rfind('/')) + "/libOSAdapt.so").c_str(), RTLD_NOW)) {}

void* JLibrary::resolve(const char* name) const { return dlsym(m_pHandle, name); }

void JLibrary::unload() { throw std::runtime_error("it stays"); }

TEST(UnloadFailure, IsLoggedAndTheManagerIsGoneAllTheSame) {
    ScratchDirectory scratch("complete");
    ASSERT_EQ(KOVASMGR_LOG_INIT(scratch.LogDirectory().c_str()), 1);
    auto* const manager = new CKOVASMgrPort;
    ASSERT_EQ(manager->Init(), 20000);
    ASSERT_EQ(manager->Release(), 20000);
    JLibrary* const library = ManagerProbe::OSAdaptLib(*manager);
    delete manager;
    EXPECT_EQ(CountOf(LogText(scratch), Info("Free OSAdapte.dll fail")), 1);
    delete library; // what could not be unloaded is not freed either
}
