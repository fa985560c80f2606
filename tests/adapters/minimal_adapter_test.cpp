// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>

#include "KOVASMgr.h"
#include "tests/adapters/adapter_under_test.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"

#ifdef KOVASMGR_MINIMAL_ADAPTER

namespace {

std::atomic<int> s_Received{0};

} // namespace

TEST(MinimalAdapter, ItsPortSendsEverythingBackToAHost) {
    const ScratchDirectory scratch;
    std::filesystem::create_symlink(KOVASMGR_MINIMAL_ADAPTER, "libOSAdapt.so");
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Init(scratch.LogDirectory().c_str()));
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(
                              [](void*, int length) { s_Received += length; }, 1));
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(1));
    EXPECT_EQ(5, KOVAMGR_Write(1, "hello", 5, 0, nullptr));
    EXPECT_TRUE(WaitUntil([] { return s_Received == 5; }));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    EXPECT_FALSE(AdapterUnderTest::IsLoaded(KOVASMGR_MINIMAL_ADAPTER));
}

TEST(MinimalAdapter, ItKeepsTheRulesOnHandlesAndCounts) {
    const AdapterUnderTest adapter(KOVASMGR_MINIMAL_ADAPTER);
    EXPECT_EQ("Loopback(loopback)", adapter.DevicesText());
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, adapter.OpenPort("other"));
    const int first = adapter.OpenPort("loopback");
    const int second = adapter.OpenPort("loopback");
    EXPECT_GT(second, first);
    EXPECT_EQ(-1, adapter.WriteText(first, "x"));
    EXPECT_EQ(65536, adapter.WriteText(second, std::string(70000, 'x')));
    EXPECT_EQ(0, adapter.WriteText(second, "y"));
    EXPECT_EQ(std::string(4096, 'x'), adapter.ReadText(second));
    EXPECT_EQ(OS_ADAPT_OK, adapter.Close(second));
    EXPECT_NE(OS_ADAPT_OK, adapter.Close(second));
    EXPECT_NE(OS_ADAPT_OK, adapter.Close(OS_ADAPT_NO_HANDLE));
}

#endif
