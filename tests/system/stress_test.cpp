// SPDX-License-Identifier: MIT
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "tests/system/attached_host.h"

namespace {

std::atomic<int> s_Bytes{0};
std::atomic<int> s_Notices{0};

void CountBytes(void*, int length) { s_Bytes += length; }
void CountNotice(_KOVAMGR_DEV_STATE_TYPE_) { ++s_Notices; }

// Uses the library as a host may from a callback.
void UseInside(void*, int) {
    KOVAMGR_Write(2, "from inside", 11, 0, nullptr);
    KOVAMGR_GetPortState(1);
}

void UseInsideNotice(_KOVAMGR_DEV_STATE_TYPE_) {
    KOVAMGR_Open(1);
    KOVAMGR_RegisterCommDataReadCallback(CountBytes, 1);
}

class Stress : public AttachedHost {
  protected:
    // Repeats a step on a thread of its own until the time is over.
    template <typename Step> void Repeat(Step step) {
        m_Threads.emplace_back([this, step] {
            for (int i = 0; !m_IsOver; ++i) {
                step(i);
            }
        });
    }

    void Join() {
        for (std::thread& thread : m_Threads) {
            thread.join();
        }
    }

    // Not more than the read thread takes away.
    void FeedData() {
        for (const char* port : {"COM1", "COM2", "COM3"}) {
            if (m_Fake->PendingReads(port) < 4) {
                m_Fake->PushData(port, "some data");
            }
        }
        std::this_thread::yield();
    }

    std::atomic<bool> m_IsOver{false};
    std::vector<std::thread> m_Threads;
};

} // namespace

TEST_F(Stress, HostThreadsTheReadThreadAndNotificationsShareTheLibraryForTwoSeconds) {
    InitAndOpen();
    auto few = FakeDevices::Many(1, 2);
    auto many = FakeDevices::Many(3, 2);
    std::atomic<int> wrong{0};
    Repeat([](int i) {
        KOVAMGR_Open(i % 8);
        KOVAMGR_Close(i % 3);
    });
    Repeat([&](int i) {
        long reason = 0;
        const int count = KOVAMGR_Write(1 + i % 4, "twelve bytes", 12, 0, &reason);
        wrong += count != 12 && count != -1 && count != KOVAMGR_ERR_NO_HANDLE ? 1 : 0;
    });
    Repeat([&](int) {
        const auto list = Enumerate();
        wrong += list->nDeviceCount < 1 || list->nDeviceCount > 3 ? 1 : 0;
        wrong += KOVAMGR_GetPortState(0) == KOVAMGR_PORT_STATE_READY ? 0 : 1;
    });
    Repeat([](int i) {
        KOVAMGR_RegisterCommDataReadCallback(i % 2 == 0 ? CountBytes : UseInside, 1 + i % 2);
        KOVAMGR_UnRegisterCommDataReadCallback(UseInside, 1 + i % 3);
        KOVAMGR_RegisterDeviceStateProcessCallback(i % 2 == 0 ? CountNotice : UseInsideNotice);
        KOVAMGR_UnRegisterDeviceStateProcessCallback(UseInsideNotice);
    });
    Repeat([this](int) { FeedData(); });
    Repeat([&](int i) {
        (i % 2 == 0 ? many : few).Apply(*m_Fake);
        m_Fake->Notify(i % 2 == 0 ? OS_ADAPT_DEVICE_INSERT : OS_ADAPT_DEVICE_PULLOUT);
    });

    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    WaitUntil([&] { return std::chrono::steady_clock::now() >= end; });
    m_IsOver = true;
    Join();
    EXPECT_EQ(0, wrong);
    EXPECT_LT(0, s_Bytes);
    EXPECT_LT(0, s_Notices);

    const auto seconds = SecondsOfRelease();
    ASSERT_TRUE(seconds.has_value()) << "the release hangs";
    EXPECT_LT(*seconds, 2.0);
    m_Fake->Reset();
    FakeDevices::Many(1, 2).Apply(*m_Fake);
    CheckThatANewManagerWorks();
}
