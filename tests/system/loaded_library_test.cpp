// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <iterator>
#include <optional>

#include "KOVASMgr.h"
#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/fake_devices.h"
#include "tests/harness/log_text.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"
#include "tests/system/settled_threads.h"

// A host that is not linked to the library, but loads and unloads it.

namespace {

std::atomic<int> s_Bytes{0};
std::atomic<bool> s_IsInside{false};
std::atomic<bool> s_MustStay{true};

void CountBytes(void*, int length) { s_Bytes += length; }

void Spin(void*, int) {
    s_IsInside = true;
    while (s_MustStay) {
    }
}

class LoadedLibrary : public testing::Test {
  protected:
    LoadedLibrary() {
        m_Fake.emplace();
        FakeDevices::Many(1, 1).Apply(**m_Fake);
    }

    void Load() {
        m_Handle = dlopen(KOVASMGR_TEST_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(nullptr, m_Handle) << dlerror();
    }

    // One of the library's functions, by the type of its declaration.
    template <typename Function> Function* Get(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(m_Handle, name));
    }

    void InitAndOpen() const {
        ASSERT_EQ(KOVAMGR_OK,
                  Get<decltype(KOVAMGR_Init)>("KOVAMGR_Init")(m_Scratch.LogDirectory().c_str()));
        ASSERT_EQ(KOVAMGR_OK, Get<decltype(KOVAMGR_Open)>("KOVAMGR_Open")(1));
    }

    void Register(KOVAMGR_READ_CALLBACK callback) const {
        EXPECT_EQ(KOVAMGR_OK, Get<decltype(KOVAMGR_RegisterCommDataReadCallback)>(
                                  "KOVAMGR_RegisterCommDataReadCallback")(callback, 1));
        (*m_Fake)->PushData("COM1", "data");
    }

    void Release() const {
        EXPECT_EQ(KOVAMGR_OK, Get<decltype(KOVAMGR_Release)>("KOVAMGR_Release")());
    }

    void Unload() { EXPECT_EQ(0, dlclose(m_Handle)); }

    static bool IsMapped(const std::string& file) {
        std::ifstream maps("/proc/self/maps"); // has no size
        const std::string text{std::istreambuf_iterator<char>(maps), {}};
        return text.find(file) != std::string::npos;
    }

    static bool IsLoaded() {
        void* const handle = dlopen(KOVASMGR_TEST_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr) {
            dlclose(handle);
        }
        return handle != nullptr;
    }

    // The host's part of one life of the library.
    void LoadUseAndUnload() {
        Load();
        s_Bytes = 0;
        InitAndOpen();
        Register(CountBytes);
        EXPECT_TRUE(WaitUntil([] { return s_Bytes == 4; }));
        EXPECT_TRUE((*m_Fake)->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
        Release();
        Unload();
    }

    const std::size_t m_Threads = SettledThreads();
    ScratchDirectory m_Scratch{"complete"};
    std::optional<FakeAdapterLibrary> m_Fake;
    void* m_Handle = nullptr;
};

} // namespace

TEST_F(LoadedLibrary, IsReallyUnloadedAfterTheReleaseAndLeavesNothingBehind) {
    LoadUseAndUnload(); // what the C library allocates once is allocated
    const std::size_t descriptors = OpenDescriptors();
    for (int life = 0; life < 5; ++life) {
        LoadUseAndUnload();
        EXPECT_FALSE(IsLoaded());
        EXPECT_FALSE(IsMapped("libKOVASMgr"));
        EXPECT_EQ(descriptors, OpenDescriptors());
        EXPECT_TRUE(WaitUntilThreadsAre(m_Threads));
    }
}

TEST_F(LoadedLibrary, ReleasesItsHoldOnTheAdapter) {
    Load();
    InitAndOpen();
    m_Fake.reset();
    EXPECT_TRUE(FakeAdapterLibrary::IsLoaded());
    Release();
    EXPECT_FALSE(FakeAdapterLibrary::IsLoaded());
    Unload();
}

TEST_F(LoadedLibrary, IsUnloadedWithoutEverHavingBeenInitialised) {
    Load();
    Release();
    Unload();
    EXPECT_FALSE(IsLoaded());
    EXPECT_FALSE(IsMapped("libKOVASMgr"));
}

TEST_F(LoadedLibrary, StaysMappedAfterAnAbandonmentUntilTheProcessEnds) {
    Load();
    InitAndOpen();
    Register(Spin);
    ASSERT_TRUE(WaitUntil([] { return s_IsInside.load(); }));
    Release();
    Unload();
    m_Fake.reset();
    EXPECT_TRUE(IsMapped("libKOVASMgr")) << "its thread is inside";
    EXPECT_TRUE(FakeAdapterLibrary::IsLoaded());
    s_MustStay = false;
    EXPECT_TRUE(WaitUntilThreadsAre(m_Threads));
    m_Fake.emplace();
    LoadUseAndUnload();
}
