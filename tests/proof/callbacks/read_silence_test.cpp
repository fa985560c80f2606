// SPDX-License-Identifier: MIT
//
// When an un-registration or a close has returned, no read callback that it ended runs or will run.
#include "tests/harness/figures.h"
#include "tests/proof/callbacks/owners.h"
#include "tests/proof/callbacks/silence_test.h"

namespace {

constexpr std::size_t kEach = SlotTable::kCallbacksEach;
constexpr auto kCallbacks = SlotDataCallbacks(std::make_index_sequence<kEach>());

void OnGuestData(void* /*data*/, int /*length*/) {}

class ReadSilence : public SilenceTest {
  protected:
    ReadSilence() { SlotTable::Get().slots = std::vector<Slot>(SlotTable::kPorts * kEach); }

    static void Register(std::size_t slot) {
        EXPECT_EQ(
            KOVAMGR_RegisterCommDataReadCallback(kCallbacks.at(slot % kEach), PortOf(slot / kEach)),
            KOVAMGR_OK);
    }
    static void UnRegister(std::size_t slot) {
        EXPECT_EQ(KOVAMGR_UnRegisterCommDataReadCallback(kCallbacks.at(slot % kEach),
                                                         PortOf(slot / kEach)),
                  KOVAMGR_OK);
    }

    void OpenAll() {
        InitWithData();
        for (std::size_t index = 0; index < SlotTable::kPorts; ++index) {
            ASSERT_EQ(KOVAMGR_Open(PortOf(index)), KOVAMGR_OK);
        }
    }

    void MakeRounds(Owners& owners, long wanted, const std::string& figure) {
        const long rounds = owners.Run(4, wanted);
        StopOthers();
        EXPECT_GE(rounds, wanted);
        EXPECT_EQ(owners.Late(), 0);
        NoteFigure(figure, static_cast<double>(rounds));
    }

    // What a host may do in a read callback, its own end included.
    static void UseTheLibrary(std::size_t slot) {
        const int port = PortOf(slot / kEach);
        switch (Disturbance::Below(16)) {
        case 0:
            KOVAMGR_Write(port, "answer", 6, 0, nullptr);
            break;
        case 1:
            KOVAMGR_RegisterCommDataReadCallback(OnGuestData, port);
            break;
        case 2:
            KOVAMGR_UnRegisterCommDataReadCallback(OnGuestData, port);
            break;
        case 3:
            UnRegister(slot);
            break;
        default:
            break;
        }
    }
};

} // namespace

TEST_F(ReadSilence, FollowsAnUnregistration) {
    OpenAll();
    Owners owners(SlotTable::Get().slots, Register, UnRegister);
    MakeRounds(owners, kRounds, "callbacks.rounds");
}

TEST_F(ReadSilence, FollowsAClose) {
    InitWithData();
    std::vector<Slot>& slots = SlotTable::Get().slots;
    slots = std::vector<Slot>(SlotTable::kPorts);
    for (std::size_t index = 0; index < slots.size(); ++index) {
        KOVAMGR_RegisterCommDataReadCallback(OnPortData, PortOf(index));
        KOVAMGR_RegisterCommDataReadCallback(OnPortDataToo, PortOf(index));
    }
    Owners owners(
        slots, [](std::size_t slot) { EXPECT_EQ(KOVAMGR_Open(PortOf(slot)), KOVAMGR_OK); },
        [](std::size_t slot) { EXPECT_EQ(KOVAMGR_Close(PortOf(slot)), KOVAMGR_OK); });
    MakeRounds(owners, kSlowRounds, "callbacks.close_rounds");
}

TEST_F(ReadSilence, FollowsAnUnregistrationWhenCallbacksUseTheLibraryAndDevicesComeAndGo) {
    SlotTable::Get().during = UseTheLibrary;
    OpenAll();
    MeanwhileRepeat([this] {
        FakeDevices more = FakeDevices::Many(4, 16);
        more.Device("Reader").Port("COM65").Apply(*m_Fake);
        m_Fake->Notify(0);
        FakeDevices::Many(4, 16).Apply(*m_Fake);
        m_Fake->Notify(1);
    });
    Owners owners(SlotTable::Get().slots, Register, UnRegister);
    MakeRounds(owners, kSlowRounds, "callbacks.busy_rounds");
}
