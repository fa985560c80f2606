// SPDX-License-Identifier: MIT
//
// The scripted adapter does what the tests rely on.
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/fake_devices.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"

namespace {

int g_Told = -1;
void Tell(_OS_ADAPT_DEVICESTATUS_TYPE status) { g_Told = status; }

class FakeAdapter : public testing::Test {
  protected:
    template <typename Function> Function Find(const char* name) const {
        return reinterpret_cast<Function>(m_Fake.Resolve(name));
    }
    int Open(const char* port) {
        m_Handle = OS_ADAPT_NO_HANDLE;
        return Find<decltype(&OS_ADAPT_OpenPort)>("OS_ADAPT_OpenPort")(port, &m_Handle);
    }
    int Read(long size) {
        m_Buffer.assign(static_cast<std::size_t>(size), '.');
        return Find<decltype(&OS_ADAPT_Read)>("OS_ADAPT_Read")(m_Handle, m_Buffer.data(), size,
                                                               &m_Count);
    }
    int Close() { return Find<decltype(&OS_ADAPT_ClosePort)>("OS_ADAPT_ClosePort")(m_Handle); }
    int Write(const std::string& bytes) {
        return Find<decltype(&OS_ADAPT_Write)>("OS_ADAPT_Write")(
            m_Handle, bytes.data(), static_cast<long>(bytes.size()), &m_Count);
    }
    int Register() {
        return Find<decltype(&OS_ADAPT_RegisterDeviceStateProcessCallBack)>(
            "OS_ADAPT_RegisterDeviceStateProcessCallBack")(Tell);
    }
    int UnRegister() {
        return Find<decltype(&OS_ADAPT_UnRegisterDeviceStateProcessCallBack)>(
            "OS_ADAPT_UnRegisterDeviceStateProcessCallBack")(Tell);
    }

    ScratchDirectory m_Scratch{"complete"};
    FakeAdapterLibrary m_Fake;
    int m_Handle = OS_ADAPT_NO_HANDLE;
    long m_Count = -7;
    std::string m_Buffer;
};

TEST_F(FakeAdapter, WritesDownWhatIsCalled) {
    Register();
    Open("COM1");
    Write("bytes");
    Close();
    m_Fake->SetResult(FakeCall::kOpen, 12);
    Open("COM2");
    UnRegister();
    const std::vector<std::string> expected = {"Register", "Open COM1 -> 1",       "Write 1 5",
                                               "Close 1",  "Open COM2 -> -1 = 12", "UnRegister"};
    EXPECT_EQ(m_Fake->Journal(), expected);
    EXPECT_EQ(m_Fake->Written("COM1"), std::vector<std::string>{"bytes"});
    EXPECT_EQ(m_Fake->OpenHandles(), 0U);
    EXPECT_EQ(m_Fake->Calls(FakeCall::kOpen), 2);
    EXPECT_EQ(m_Fake->LastThread(FakeCall::kOpen), std::this_thread::get_id());
}

TEST_F(FakeAdapter, HandsOutDataAsThereIsRoom) {
    Open("COM1");
    m_Fake->PushData("COM1", "abcdef");
    EXPECT_EQ(Read(4), OS_ADAPT_OK);
    EXPECT_EQ(m_Buffer.substr(0, 4), "abcd");
    EXPECT_EQ(Read(4), OS_ADAPT_OK);
    EXPECT_EQ(m_Count, 2);
    EXPECT_EQ(m_Buffer, "ef..");
    EXPECT_EQ(Read(4), OS_ADAPT_OK);
    EXPECT_EQ(m_Count, 0);
}

TEST_F(FakeAdapter, LiesAboutCountsButNeverWritesTooMuch) {
    Open("COM1");
    m_Fake->PushRead("COM1", {"abcdef", 5000, true, OS_ADAPT_OK});
    m_Fake->PushRead("COM1", {"x", -3, true, OS_ADAPT_OK});
    m_Fake->PushRead("COM1", {"y", std::nullopt, false, OS_ADAPT_OK});
    m_Fake->PushRead("COM1", {"", std::nullopt, true, 17});
    EXPECT_EQ(Read(4), OS_ADAPT_OK);
    EXPECT_EQ(m_Count, 5000);
    EXPECT_EQ(Read(4), OS_ADAPT_OK);
    EXPECT_EQ(m_Count, -3);
    EXPECT_EQ(Read(4), OS_ADAPT_OK);
    EXPECT_EQ(m_Count, -3);
    EXPECT_EQ(m_Buffer, "y...");
    EXPECT_EQ(Read(4), 17);
    EXPECT_EQ(m_Fake->PendingReads("COM1"), 0U);
}

TEST_F(FakeAdapter, FailsFromTheNthCallOn) {
    m_Fake->FailFrom(FakeCall::kOpen, 2);
    EXPECT_EQ(Open("COM1"), OS_ADAPT_OK);
    EXPECT_EQ(Open("COM1"), OS_ADAPT_FAILED);
    EXPECT_EQ(Open("COM1"), OS_ADAPT_FAILED);
    m_Fake->SetResult(FakeCall::kOpen, OS_ADAPT_OK);
    EXPECT_EQ(Open("COM1"), OS_ADAPT_OK);
}

TEST_F(FakeAdapter, StoresAScriptedHandleAlsoWhenItFails) {
    m_Fake->SetHandle("COM1", 99);
    m_Fake->SetResult(FakeCall::kOpen, OS_ADAPT_FAILED);
    EXPECT_EQ(Open("COM1"), OS_ADAPT_FAILED);
    EXPECT_EQ(m_Handle, 99);
}

TEST_F(FakeAdapter, ReportsAScriptedWriteCount) {
    Open("COM1");
    m_Fake->SetWriteCount(3);
    EXPECT_EQ(Write("bytes"), OS_ADAPT_OK);
    EXPECT_EQ(m_Count, 3);
}

TEST_F(FakeAdapter, EnumeratesTheWholeRecordAsItWasSet) {
    FakeDevices devices;
    devices.Device(std::string(128, 'd'), "text").Port(std::string(256, 'p'), 7).PortCount(99);
    devices.DeviceCount(70).Apply(*m_Fake);
    const auto list = std::make_unique<_OS_ADAPT_DEVICEPORTLIST>();
    EXPECT_EQ(
        Find<decltype(&OS_ADAPT_EnumDevicePortInfo)>("OS_ADAPT_EnumDevicePortInfo")(4, list.get()),
        OS_ADAPT_OK);
    EXPECT_EQ(list->nDeviceCount, 70);
    EXPECT_EQ(std::string(list->stDevice[0].szDeviceName, 128), std::string(128, 'd'));
    EXPECT_EQ(std::string(list->stDevice[0].stPort[0].szPortName, 256), std::string(256, 'p'));
    EXPECT_EQ(list->stDevice[0].stPort[0].nPortID, 7);
    EXPECT_EQ(list->stDevice[0].nPortCount, 99);
    EXPECT_STREQ(list->stDevice[0].szDeviceText, "text");
}

TEST_F(FakeAdapter, NotifiesWhileRegisteredAndIfToldSoAfterwards) {
    EXPECT_FALSE(m_Fake->Notify(1));
    Register();
    EXPECT_TRUE(m_Fake->Notify(5));
    EXPECT_EQ(g_Told, 5);
    EXPECT_TRUE(m_Fake->NotifyOnThread(0));
    EXPECT_EQ(g_Told, 0);
    UnRegister();
    EXPECT_FALSE(m_Fake->Notify(1));
    m_Fake->KeepNotifyingAfterUnRegister(true);
    EXPECT_TRUE(m_Fake->Notify(1));
    EXPECT_EQ(g_Told, 1);
}

TEST_F(FakeAdapter, RunsAHookInsideACallWithoutHoldingALock) {
    long calls = 0;
    m_Fake->SetHook(FakeCall::kOpen, [&] { calls = m_Fake->Calls(FakeCall::kOpen); });
    Open("COM1");
    EXPECT_EQ(calls, 1);
    m_Fake->SetHook(FakeCall::kOpen, [] { throw std::runtime_error("from the hook"); });
    EXPECT_THROW(Open("COM1"), std::runtime_error);
    m_Fake->Reset();
    EXPECT_EQ(Open("COM1"), OS_ADAPT_OK);
}

TEST_F(FakeAdapter, HangsUntilItIsUnblocked) {
    for (const FakeBlock how : {FakeBlock::kInRead, FakeBlock::kInMutex, FakeBlock::kInSpin}) {
        m_Fake->Block(FakeCall::kOpen, how);
        std::thread caller([this] { Open("COM1"); });
        EXPECT_TRUE(WaitUntil([&] { return m_Fake->Blocked() == 1; }));
        m_Fake->Unblock();
        caller.join();
        EXPECT_EQ(m_Fake->Blocked(), 0);
    }
    EXPECT_EQ(m_Fake->OpenHandles(), 3U);
}

TEST(FakeAdapterVariant, LacksExactlyTheFunctionThatItIsNamedAfter) {
    const std::vector<std::string> functions = {"OS_ADAPT_RegisterDeviceStateProcessCallBack",
                                                "OS_ADAPT_UnRegisterDeviceStateProcessCallBack",
                                                "OS_ADAPT_OpenPort",
                                                "OS_ADAPT_ClosePort",
                                                "OS_ADAPT_Write",
                                                "OS_ADAPT_Read",
                                                "OS_ADAPT_EnumDevicePortInfo"};
    for (const std::string& lacking : functions) {
        const FakeAdapterLibrary fake(ScratchDirectory::AdapterFile("lacks_" + lacking));
        for (const std::string& function : functions) {
            EXPECT_EQ(fake.Resolve(function) == nullptr, function == lacking) << function;
        }
    }
}

} // namespace
