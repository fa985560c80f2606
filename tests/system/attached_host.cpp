// SPDX-License-Identifier: MIT
#include "tests/system/attached_host.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<int> s_Bytes{0};
std::atomic<int> s_Notices{0};

void CountBytes(void*, int length) { s_Bytes += length; }
void CountNotice(_KOVAMGR_DEV_STATE_TYPE_) { ++s_Notices; }

} // namespace

AttachedHost::AttachedHost() { FakeDevices::Many(1, 2).Apply(*m_Fake); }

AttachedHost::~AttachedHost() { KOVAMGR_Release(); }

void AttachedHost::InitAndOpen() const {
    ASSERT_EQ(KOVAMGR_OK, Init());
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(1));
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(2));
}

std::optional<double> AttachedHost::SecondsOfRelease() {
    const auto hasReturned = std::make_shared<std::atomic<bool>>(false);
    const auto start = Clock::now();
    std::thread thread([hasReturned] {
        KOVAMGR_Release();
        *hasReturned = true;
    });
    if (!WaitUntil([&] { return hasReturned->load(); }, std::chrono::seconds(20))) {
        thread.detach();
        return std::nullopt;
    }
    thread.join();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void AttachedHost::CheckThatANewManagerWorks() {
    s_Bytes = 0;
    s_Notices = 0;
    m_Fake->Unblock();
    InitAndOpen();
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(CountBytes, 1));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(CountNotice));
    m_Fake->PushData("COM1", "twelve bytes");
    EXPECT_TRUE(WaitUntil([] { return s_Bytes == 12; }));
    EXPECT_EQ(5, KOVAMGR_Write(1, "hello", 5, 0, nullptr));
    EXPECT_EQ("hello", m_Fake->Written("COM1").back());
    EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
    EXPECT_EQ(1, s_Notices);
    const auto seconds = SecondsOfRelease();
    ASSERT_TRUE(seconds.has_value()) << "the release hangs";
    EXPECT_LT(*seconds, 2.0);
}

int AttachedHost::JournalLines(const std::string& line) const {
    const auto journal = m_Fake->Journal();
    return static_cast<int>(std::count(journal.begin(), journal.end(), line));
}

std::unique_ptr<_KOVAMGR_DEVICEINFOLIST> AttachedHost::Enumerate() {
    auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_EnumeratePortInfo(list.get()));
    return list;
}
