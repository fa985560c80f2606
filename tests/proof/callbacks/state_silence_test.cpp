// SPDX-License-Identifier: MIT
//
// When a device-state callback's un-registration has returned, it does not run and will not run.
#include "tests/harness/figures.h"
#include "tests/proof/callbacks/owners.h"
#include "tests/proof/callbacks/silence_test.h"

namespace {

constexpr std::size_t kSlots = 128;
constexpr auto kCallbacks = SlotNoticeCallbacks(std::make_index_sequence<kSlots>());

class StateSilence : public SilenceTest {
  protected:
    StateSilence() { SlotTable::Get().slots = std::vector<Slot>(kSlots); }

    static void Register(std::size_t slot) {
        EXPECT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(kCallbacks.at(slot)), KOVAMGR_OK);
    }
    static void UnRegister(std::size_t slot) {
        EXPECT_EQ(KOVAMGR_UnRegisterDeviceStateProcessCallback(kCallbacks.at(slot)), KOVAMGR_OK);
    }

    void MakeRounds(long wanted, const std::string& figure) {
        MeanwhileRepeat([this] { m_Fake->Notify(5); });
        MeanwhileRepeat([this] { m_Fake->Notify(static_cast<int>(Disturbance::Below(50)) / 49); });
        Owners owners(SlotTable::Get().slots, Register, UnRegister);
        const long rounds = owners.Run(4, wanted);
        StopOthers();
        EXPECT_GE(rounds, wanted);
        EXPECT_EQ(owners.Late(), 0);
        NoteFigure(figure, static_cast<double>(rounds));
    }
};

} // namespace

TEST_F(StateSilence, FollowsAnUnregistration) {
    InitWith(FakeDevices());
    MakeRounds(kRounds, "callbacks.notice_rounds");
}

TEST_F(StateSilence, FollowsAnUnregistrationWhenCallbacksUseTheLibraryAndDataArrives) {
    SlotTable::Get().during = [](std::size_t slot) {
        if (Disturbance::Below(8) == 0) {
            KOVAMGR_Open(PortOf(slot % SlotTable::kPorts));
            KOVAMGR_Write(PortOf(slot % SlotTable::kPorts), "answer", 6, 0, nullptr);
        }
    };
    InitWithData();
    MakeRounds(kSlowRounds, "callbacks.busy_notice_rounds");
}
