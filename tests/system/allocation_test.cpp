// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>

#include "KOVASMgr.h"
#include "KOVASMgrLog.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"
#include "tests/system/refused_allocations.h"

namespace {

std::atomic<int> s_Chunks{0};

void RunOutOfMemory(void*, int) { RefuseAllocations(true); }

void LogChunk(void*, int length) {
    ++s_Chunks;
    INFO_LOG("chunk %d of %d bytes, %s, %.3f", s_Chunks.load(), length, "logged", 0.5);
}

class Allocation : public testing::Test {
  protected:
    Allocation() { std::filesystem::create_symlink(KOVASMGR_TEST_LEAN_ADAPTER, "libOSAdapt.so"); }
    ~Allocation() override { KOVAMGR_Release(); }

    void InitAndOpen() const {
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Init(m_Scratch.LogDirectory().c_str()));
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(1));
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(2));
    }

    // While TZ is unset, the C library copies the default's name whenever a new second begins.
    static void FixTheTimeZone() { setenv("TZ", "UTC", 1); }

    // Lets the read thread sweep, call back and log for some seconds in which it gets no memory.
    void CheckThatTheReadThreadLivesOnWithoutMemory() const {
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Init(m_Scratch.LogDirectory().c_str()));
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(RunOutOfMemory, 1));
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(LogChunk, 1));
        InitAndOpen();
        EXPECT_TRUE(WaitUntil([&] { return SecondsInLog() >= 4; })) << "no lines without memory";
        EXPECT_LT(100, s_Chunks);
        EXPECT_LT(100, CountOf(LogText(m_Scratch), "INFO:Read failed.\n\n"));
        EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
        EXPECT_EQ(1, CountOf(LogText(m_Scratch), "ReadThread() Exit"));
    }

    // The different seconds in which a line was written.
    std::size_t SecondsInLog() const {
        std::set<std::string> seconds;
        const std::string log = FileText(m_Scratch.LogFile());
        for (auto at = log.find("\n["); at != std::string::npos; at = log.find("\n[", at + 1)) {
            seconds.insert(log.substr(at + 2, 19));
        }
        return seconds.size();
    }

    ScratchDirectory m_Scratch;
};

} // namespace

TEST_F(Allocation, TheMeasureItselfNotices) {
#ifdef KOVASMGR_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer hands out the memory itself";
#endif
    RefuseAllocations(true);
    EXPECT_THROW(static_cast<void>(std::make_unique<std::string>(1000, 'x')), std::bad_alloc);
    RefuseAllocations(false);
    EXPECT_LT(0, RefusedAllocations());
}

TEST_F(Allocation, TheReadThreadAndItsLogLinesAskForNoMemory) {
#ifdef KOVASMGR_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer hands out the memory itself";
#endif
    FixTheTimeZone();
    CheckThatTheReadThreadLivesOnWithoutMemory();
    EXPECT_EQ(0, RefusedAllocations()) << "somebody asked for memory on the read thread";
}

TEST_F(Allocation, TheReadThreadAndItsLogLinesLiveOnInTheDefaultTimeZone) {
#ifdef KOVASMGR_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer hands out the memory itself";
#endif
    unsetenv("TZ");
    CheckThatTheReadThreadLivesOnWithoutMemory();
}

TEST_F(Allocation, AnInitThatGetsNoneFailsAndALaterOneWorks) {
#ifdef KOVASMGR_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer hands out the memory itself";
#endif
    const std::string directory = m_Scratch.LogDirectory();
    RefuseAllocations(true);
    const int initialised = KOVAMGR_Init(directory.c_str());
    const int state = KOVAMGR_GetPortState(1);
    RefuseAllocations(false);
    EXPECT_EQ(KOVAMGR_ERR_OSADAPT, initialised);
    EXPECT_EQ(KOVAMGR_ERR_NOT_INIT, state);
    InitAndOpen();
}

TEST_F(Allocation, APortOperationNeedsNoMemory) {
#ifdef KOVASMGR_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer hands out the memory itself";
#endif
    FixTheTimeZone();
    InitAndOpen();
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    RefuseAllocations(true);
    const int written = KOVAMGR_Write(1, "x", 1, 0, nullptr);
    const int closed = KOVAMGR_Close(1);
    const int opened = KOVAMGR_Open(1);
    const int enumerated = KOVAMGR_EnumeratePortInfo(list.get());
    const int released = KOVAMGR_Release();
    RefuseAllocations(false);
    EXPECT_EQ(1, written);
    EXPECT_EQ(KOVAMGR_OK, closed);
    EXPECT_EQ(KOVAMGR_OK, opened);
    EXPECT_EQ(KOVAMGR_OK, enumerated);
    EXPECT_EQ(KOVAMGR_OK, released);
    EXPECT_EQ(0, RefusedAllocations());
}
