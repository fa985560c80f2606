// SPDX-License-Identifier: MIT
#include "tests/package/namesakes.h"

#include <gtest/gtest.h>

#include <atomic>

#include "KOVASMgr.h"
#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/fake_devices.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"

namespace {

std::atomic<int> s_Calls{0};
char s_OwnPath[] = "the host's own";

int Count() {
    ++s_Calls;
    return -1;
}

} // namespace

// The host has these names by chance, and does not know the library's headers for them.
extern "C" {
int INFO_LOG(const char*, ...) { return Count(); }
int ERRO_LOG(const char*, ...) { return Count(); }
int FATAL_LOG(const char*, ...) { return Count(); }
int INIT_LOG(const char*, bool) { return Count(); }
int KOVASMGR_LOG_INIT(const char*) { return Count(); }
void PelMgr_GetCurrentTime(char*, const char*) { Count(); }
const char* memcasecmp(const char*, const char*, int) { return Count(), nullptr; }
const char* SubMem(const char*, int, const char*, int) { return Count(), nullptr; }
const char* SubCaseMem(const char*, int, const char*, int) { return Count(), nullptr; }
char* GetCurrentPath() { return Count(), s_OwnPath; }
char* GetKOVASMgrDllPath() { return Count(), s_OwnPath; }
char* GetOSAdaptDllPath() { return Count(), s_OwnPath; }
}

class CWRITE_LOG {
  public:
    CWRITE_LOG();
    ~CWRITE_LOG();
    bool init(const char*, bool);
    void CheckLogFileSize();
};
CWRITE_LOG::CWRITE_LOG() { Count(); }
CWRITE_LOG::~CWRITE_LOG() { Count(); }
bool CWRITE_LOG::init(const char*, bool) { return Count() == 0; }
void CWRITE_LOG::CheckLogFileSize() { Count(); }

int NamesakeCalls() { return s_Calls; }

namespace {

void OnData(void*, int) {}
void OnDevices(_KOVAMGR_DEV_STATE_TYPE_) {}

void UseTheLibrary(const ScratchDirectory& scratch, FakeAdapterControl& fake) {
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Init(scratch.LogDirectory().c_str()));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(OnData, 1));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(OnDevices));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Open(1));
    EXPECT_EQ(1, KOVAMGR_Write(1, "x", 1, 0, nullptr));
    fake.PushData("COM1", "data");
    EXPECT_TRUE(WaitUntil([&] { return fake.PendingReads("COM1") == 0; }));
    EXPECT_TRUE(fake.NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
    EXPECT_TRUE(fake.NotifyOnThread(OS_ADAPT_DEVICE_PULLOUT));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
}

} // namespace

void CheckThatNamesakesStayApart() {
    ScratchDirectory scratch("complete");
    FakeAdapterLibrary fake;
    FakeDevices::Many(1, 1).Apply(*fake);
    UseTheLibrary(scratch, *fake);
    EXPECT_EQ(0, NamesakeCalls()) << "the host captured a call of the library's";

    const std::string log = LogText(scratch);
    EXPECT_NE(std::string::npos, log.find("Open COM1 succeed."));
    EXPECT_EQ(-1, INFO_LOG("a line of the host's own"));
    EXPECT_STREQ("the host's own", GetCurrentPath());
    EXPECT_EQ(nullptr, SubMem("x", 1, "x", 1));
    { CWRITE_LOG().CheckLogFileSize(); }
    EXPECT_EQ(6, NamesakeCalls()) << "the library captured a call of the host's";
    EXPECT_EQ(log, LogText(scratch));
}
