// SPDX-License-Identifier: MIT
//
// A port goes while the host uses it, each interleaving fixed by gates in the scripted adapter and
// in the host's callbacks.
#include "tests/harness/figures.h"
#include "tests/harness/process_counts.h"
#include "tests/proof/unplug/fake_matrix.h"
#include "tests/proof/unplug/handle_account.h"
#include "tests/proof/unplug/processor_time.h"
#include "tests/system/settled_threads.h"

namespace {

const std::vector<Cell>& Cells() {
    static const std::vector<Cell> cells =
        CellsAt({Moment::kBefore, Moment::kUnderWay, Moment::kDuringRescan, Moment::kDuringCallback,
                 Moment::kAfter});
    return cells;
}

class Unplugging : public FakeMatrix {
  protected:
    void TearDown() override {
        if (!HasFailure()) {
            NoteFigure("unplug.cells_fake", 1);
        }
    }

    bool Is(Operation operation) const { return m_Cell.operation == operation; }

    int ExpectedResult() const {
        switch (m_Cell.operation) {
        case Operation::kOpen:
        case Operation::kRegister:
        case Operation::kUnRegister:
            return m_Cell.HasPort() ? KOVAMGR_OK : KOVAMGR_ERR_PARAM;
        case Operation::kWrite:
            return m_Cell.HasPort() ? 5 : -1;
        case Operation::kReceive:
            return 1;
        case Operation::kEnumerate:
            return 0;
        default:
            return KOVAMGR_OK;
        }
    }

    // A host that has released is told nothing.
    int ExpectedNotices() const {
        return Is(Operation::kRelease) && m_Cell.moment == Moment::kBefore ? 0 : 1;
    }

    // Of the second device-state callback, which the operation adds or removes.
    int ExpectedSecondNotices() const {
        if (Is(Operation::kRegisterState)) {
            return m_Cell.HasPort() || m_Cell.moment == Moment::kDuringRescan ? 1 : 0;
        }
        const bool isInTime = m_Cell.HasPort() || m_Cell.moment == Moment::kDuringRescan;
        return Is(Operation::kUnRegisterState) && !isInTime ? 1 : 0;
    }

    Lines ExpectedDevices() const {
        return m_Cell.gone == Gone::kPort ? Lines{"Modem: COM2 = 2", "Reader: COM3 = 3"}
                                          : Lines{"Reader: COM3 = 3"};
    }

    // A port that its device has lost is dropped as it is, for the adapter to reclaim.
    Lines ExpectedLeft() const {
        const bool endsIt = Is(Operation::kClose) || Is(Operation::kRelease);
        const bool wasOpen = endsIt                 ? !m_Cell.HasPort()
                             : Is(Operation::kOpen) ? m_Cell.HasPort()
                                                    : true;
        return m_Cell.gone == Gone::kPort && wasOpen ? Lines{"COM1"} : Lines{};
    }

    void ExpectOneNotice() const {
        EXPECT_EQ(Told("state 1: 20201"), ExpectedNotices());
        EXPECT_EQ(Told("state 2: 20201"), ExpectedSecondNotices());
        EXPECT_EQ(Told("state 1: 20200"), 0);
    }

    void ExpectNeighbourWorks() {
        EXPECT_EQ(Devices(), ExpectedDevices());
        EXPECT_EQ(KOVAMGR_Write(3, "stays", 5, 0, nullptr), 5);
        m_Fake->PushData("COM3", "stays");
        EXPECT_TRUE(WaitUntil([this] { return Told("read 3: stays") == 1; }));
        EXPECT_EQ(KOVAMGR_Write(1, "gone", 4, 0, nullptr), -1);
        EXPECT_EQ(Told("read 1: data"), Is(Operation::kReceive) && m_Cell.HasPort() ? 1 : 0);
    }

    void ExpectHandlesAccountedFor() const {
        const HandleAccount account = AccountOf(m_Fake->Journal());
        EXPECT_EQ(account.left, ExpectedLeft());
        EXPECT_EQ(account.wrong, Lines());
        EXPECT_EQ(m_Fake->OpenHandles(), ExpectedLeft().size());
    }
};

class UnpluggingAtTheEnd : public HostTest {};

std::string NameOfParameter(const testing::TestParamInfo<Cell>& info) { return NameOf(info.param); }

} // namespace

TEST_P(Unplugging, TellsOnceAndNothingHangsSpinsOrIsLeft) {
    const std::size_t threads = SettledThreads();
    const std::size_t descriptors = OpenDescriptors();
    Attach();
    ASSERT_FALSE(HasFatalFailure());
    Run();
    ASSERT_FALSE(HasFatalFailure());
    EXPECT_EQ(Result(), ExpectedResult());
    if (Is(Operation::kEnumerate)) {
        const Lines before{"Modem: COM1 = 1, COM2 = 2", "Reader: COM3 = 3"};
        EXPECT_EQ(SnapshotOfDevices(), m_Cell.HasPort() ? before : ExpectedDevices());
    }
    if (!Is(Operation::kRelease)) {
        ExpectNeighbourWorks();
        EXPECT_TRUE(IsIdle());
    }
    BoundedThread("the release", [] { EXPECT_EQ(KOVAMGR_Release(), KOVAMGR_OK); }).Join();
    ExpectOneNotice();
    ExpectHandlesAccountedFor();
    EXPECT_TRUE(WaitUntilThreadsAre(threads));
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(CountOf(LogText(m_Scratch), "] ERRO:"), 0);
}

INSTANTIATE_TEST_SUITE_P(OnTheScriptedAdapter, Unplugging, testing::ValuesIn(Cells()),
                         NameOfParameter);

TEST(UnplugMatrix, OfTheScriptedAdapterHasEachOperationAtEachMoment) {
    EXPECT_EQ(Cells().size(), 10U * 5U * 2U);
}

// No lock is held there, so that nobody waits; the callbacks are forgotten only when the notice has
// ended.
TEST_F(UnpluggingAtTheEnd, APullOutWhileTheReleaseUnregistersIsTold) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), KOVAMGR_OK);
    ASSERT_EQ(KOVAMGR_Open(1), KOVAMGR_OK);
    m_Fake->SetHook(FakeCall::kUnRegister, [this] {
        FakeDevices().Apply(*m_Fake);
        CaptureStdout output;
        EXPECT_TRUE(m_Fake->NotifyOnThread(1));
        EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20201"}));
    });
    BoundedThread("the release", [] { EXPECT_EQ(KOVAMGR_Release(), KOVAMGR_OK); }).Join();
    EXPECT_EQ(m_Recorder.Count(), 1U);
    EXPECT_EQ(m_Fake->OpenHandles(), 0U);
}
