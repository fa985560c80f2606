// SPDX-License-Identifier: MIT
//
// When a release has returned, no callback runs or will run.
#include <algorithm>

#include "tests/harness/figures.h"
#include "tests/proof/callbacks/silence_test.h"

namespace {

constexpr int kReleases = 30;

class ReleaseSilence : public SilenceTest {
  protected:
    ReleaseSilence() { SlotTable::Get().slots = std::vector<Slot>(SlotTable::kPorts + 1); }

    void Start() {
        ASSERT_EQ(Init(), KOVAMGR_OK);
        for (std::size_t index = 0; index < SlotTable::kPorts; ++index) {
            SlotTable::Get().slots[index].TakeInUse();
            const int port = PortOf(index);
            ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnPortData, port), KOVAMGR_OK);
            ASSERT_EQ(KOVAMGR_Open(port), KOVAMGR_OK);
        }
        SlotTable::Get().slots[kNotice].TakeInUse();
        ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnSlotNotice<kNotice>), KOVAMGR_OK);
    }

    static bool AllWereCalled() {
        const std::vector<Slot>& slots = SlotTable::Get().slots;
        return std::all_of(slots.begin(), slots.end(),
                           [](const Slot& slot) { return slot.Calls() > 0; });
    }

    static void GiveUpAll() {
        for (Slot& slot : SlotTable::Get().slots) {
            slot.GiveUp();
        }
    }

    static long Late() {
        long late = 0;
        for (const Slot& slot : SlotTable::Get().slots) {
            late += slot.Late();
        }
        return late;
    }

    static constexpr std::size_t kNotice = SlotTable::kPorts; // its slot is behind those of ports
};

} // namespace

TEST_F(ReleaseSilence, FollowsEveryRelease) {
    InitWithData();
    ASSERT_EQ(KOVAMGR_Release(), KOVAMGR_OK);
    m_Fake->KeepNotifyingAfterUnRegister(true);
    MeanwhileRepeat([this] { m_Fake->Notify(5); });
    MeanwhileRepeat([this] { m_Fake->Notify(1); });
    for (int release = 0; release < kReleases && !HasFailure(); ++release) {
        Start();
        EXPECT_TRUE(WaitUntil(AllWereCalled));
        Disturbance::Yield();
        EXPECT_EQ(KOVAMGR_Release(), KOVAMGR_OK);
        GiveUpAll();
        WaitUntil([] { return Late() > 0; }, std::chrono::milliseconds(Disturbance::Below(30)));
        EXPECT_EQ(Late(), 0);
    }
    NoteFigure("callbacks.releases", kReleases);
}
