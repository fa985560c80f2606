// SPDX-License-Identifier: MIT
//
// What every function answers to bad arguments, and before the library is initialised.
#include "tests/api/host_test.h"

namespace {

using Arguments = HostTest;

std::vector<int> AnswersTo(int port) {
    const char data[] = "abc";
    long result = 5;
    const std::vector<int> answers = {
        KOVAMGR_Open(port),
        KOVAMGR_Close(port),
        KOVAMGR_GetPortState(port),
        KOVAMGR_Write(port, data, 3, 0, &result),
        KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, port),
        KOVAMGR_UnRegisterCommDataReadCallback(OnRead<1>, port),
    };
    EXPECT_EQ(result, 5);
    return answers;
}

void ExpectBadArguments() {
    long result = 5;
    EXPECT_EQ(AnswersTo(-1), std::vector<int>(6, 20001));
    EXPECT_EQ(AnswersTo(-2147483647 - 1), std::vector<int>(6, 20001));
    EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(nullptr, 1), 20001);
    EXPECT_EQ(KOVAMGR_UnRegisterCommDataReadCallback(nullptr, 1), 20001);
    EXPECT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(nullptr), 20001);
    EXPECT_EQ(KOVAMGR_UnRegisterDeviceStateProcessCallback(nullptr), 20001);
    EXPECT_EQ(KOVAMGR_EnumeratePortInfo(nullptr), 20001);
    EXPECT_EQ(KOVAMGR_Write(1, nullptr, 3, 0, &result), 20001);
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 0, 0, &result), 20001);
    EXPECT_EQ(KOVAMGR_Write(1, "abc", -1, 0, &result), 20001);
    EXPECT_EQ(result, 5) << "the error variable is left alone";
}

void ExpectNotInitialised() {
    EXPECT_EQ(AnswersTo(0), std::vector<int>(6, 20003));
    EXPECT_EQ(AnswersTo(1), std::vector<int>(6, 20003));
    EXPECT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20003);
    EXPECT_EQ(KOVAMGR_UnRegisterDeviceStateProcessCallback(OnState<1>), 20003);
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    list->nDeviceCount = 77;
    EXPECT_EQ(KOVAMGR_EnumeratePortInfo(list.get()), 20003);
    EXPECT_EQ(list->nDeviceCount, 77u) << "the list is left alone";
}

} // namespace

TEST_F(Arguments, GoodOnesBeforeInitAreNotInitialised) { ExpectNotInitialised(); }

TEST_F(Arguments, GoodOnesAfterReleaseAreNotInitialised) {
    ASSERT_EQ(Init(), 20000);
    ASSERT_EQ(KOVAMGR_Release(), 20000);
    ExpectNotInitialised();
}

TEST_F(Arguments, BadOnesAreBadBeforeInit) { ExpectBadArguments(); }

TEST_F(Arguments, BadOnesAreBadAfterInitAndReachNothing) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ExpectBadArguments();
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(Arguments, BadOnesAreBadAfterRelease) {
    ASSERT_EQ(Init(), 20000);
    ASSERT_EQ(KOVAMGR_Release(), 20000);
    ExpectBadArguments();
}

TEST_F(Arguments, PortZeroIsValidEverywhere) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    long result = 5;
    EXPECT_EQ(KOVAMGR_Open(0), 20001) << "valid, but unknown";
    EXPECT_EQ(KOVAMGR_Close(0), 20000);
    EXPECT_EQ(KOVAMGR_GetPortState(0), 20050);
    EXPECT_EQ(KOVAMGR_Write(0, "abc", 3, 0, &result), -1);
    EXPECT_EQ(result, 20001);
    EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 0), 20001);
    EXPECT_EQ(KOVAMGR_UnRegisterCommDataReadCallback(OnRead<1>, 0), 20001);
}

TEST_F(Arguments, GoodOnesAfterAFailedInitAreNotInitialised) {
    m_Fake->SetResult(FakeCall::kRegister, OS_ADAPT_FAILED);
    ASSERT_EQ(Init(), 20002);
    ExpectNotInitialised();
}
