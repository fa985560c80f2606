// SPDX-License-Identifier: MIT
//
// A port goes while the host uses it, on terminals of the kernel: round after round, with the host
// and the pull-out released together at random moments.
#include <algorithm>

#include "KOVASMgr.h"
#include "tests/harness/figures.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"
#include "tests/proof/unplug/bounded_thread.h"
#include "tests/proof/unplug/processor_time.h"
#include "tests/proof/unplug/terminal_callbacks.h"
#include "tests/proof/unplug/terminal_matrix.h"
#include "tests/proof/unplug/terminals.h"
#include "tests/system/settled_threads.h"

namespace {

const std::vector<Cell>& Cells() {
    static const std::vector<Cell> cells =
        CellsAt({Moment::kBefore, Moment::kUnderWay, Moment::kDuringRescan, Moment::kAfter});
    return cells;
}

// A release takes longer than a pull-out.
int RoundsOf(const Cell& cell) { return cell.operation == Operation::kRelease ? 10 : 30; }

class UnpluggingTerminals : public TerminalMatrix {
  protected:
    void TearDown() override {
        if (HasFailure()) {
            return;
        }
        NoteFigure("unplug.cells_terminals", 1);
        NoteFigure("unplug.rounds", m_Rounds);
        if (m_Cell.IsRace()) {
            NoteFigure("unplug.terminal_outcomes_before", m_RoundsFirst);
            NoteFigure("unplug.terminal_outcomes_after", m_Rounds - m_RoundsFirst);
        }
    }

    void ExpectGoodEnd() {
        EXPECT_TRUE(EndedWell()) << m_Result;
        ++m_Rounds;
        m_RoundsFirst += CameFirst() ? 1 : 0;
    }

    // Waits, as what is closed by another thread takes a moment.
    static void ExpectTerminalDescriptors(std::size_t count) {
        EXPECT_TRUE(WaitUntil([&] { return TerminalDescriptors() == count; }))
            << TerminalDescriptors() << " instead of " << count;
    }

    void ExpectGone() const {
        EXPECT_EQ(IdOf("other-0"), -1);
        EXPECT_EQ(KOVAMGR_Write(m_Other, "x", 1, 0, nullptr), -1);
        EXPECT_TRUE(m_Far->IsHungUp());
    }

    void ExpectNeighbourWorks() const {
        const int before = m_Notices.bytes;
        EXPECT_EQ(IdOf("mine-0"), m_Mine);
        EXPECT_EQ(KOVAMGR_Write(m_Mine, "to", 2, 0, nullptr), 2);
        EXPECT_EQ(m_MineFar->Receive(2), "to");
        EXPECT_TRUE(m_MineFar->Send("from"));
        EXPECT_TRUE(WaitUntil([&] { return m_Notices.bytes == before + 4; }));
    }

    void ExpectNotices(int pullOuts, int insertions) const {
        EXPECT_EQ(m_Notices.pullOuts, pullOuts);
        EXPECT_EQ(m_Notices.insertions, insertions);
    }

    bool ExpectsDelivery() const {
        return m_Cell.operation == Operation::kReceive && m_Cell.moment != Moment::kAfter;
    }

    // What is open when the ports in question are out: learnt from a pull-out that nobody disturbs.
    std::size_t TerminalsAfterAQuietPullOut() {
        Use();
        m_Far.reset();
        PullOut();
        std::size_t count = 0;
        int looks = 0;
        WaitUntil([&] {
            looks = TerminalDescriptors() == count ? looks + 1 : 0;
            count = TerminalDescriptors();
            return looks >= 20;
        });
        PlugIn();
        return count;
    }

    void Round(int round, std::size_t terminalsWithout) {
        Use();
        ASSERT_FALSE(HasFatalFailure());
        Collide();
        EXPECT_EQ(m_Reply, "ok");
        ExpectGoodEnd();
        ExpectNotices(round + 1, round);
        EXPECT_EQ(m_Notices.deliveries, ExpectsDelivery() ? round : 0);
        ExpectGone();
        m_Far.reset();
        ExpectTerminalDescriptors(terminalsWithout);
        ExpectNeighbourWorks();
    }

    void RunRounds() {
        Start();
        ASSERT_FALSE(HasFatalFailure());
        const std::size_t without = TerminalsAfterAQuietPullOut();
        for (int round = 1; round <= RoundsOf(m_Cell) && !HasFailure(); ++round) {
            Round(round, without);
            PlugIn();
            ExpectNotices(round + 1, round + 1);
        }
        PullOut();
        EXPECT_TRUE(IsIdle());
        Leave();
    }

    void Leave() {
        BoundedThread("the release", [] { EXPECT_EQ(KOVAMGR_Release(), KOVAMGR_OK); }).Join();
        Disconnect();
        EXPECT_TRUE(WaitUntilThreadsAre(m_Threads));
        EXPECT_EQ(OpenDescriptors(), m_Descriptors);
    }

    // The operation is the release; whether the notice came before is left to chance, but when it
    // was told the host has heard it once, and nothing comes when the release has returned.
    void RunReleases() {
        for (int round = 0; round < RoundsOf(m_Cell) && !HasFailure(); ++round) {
            m_Notices.pullOuts = 0;
            Start();
            Use();
            ASSERT_FALSE(HasFatalFailure());
            Collide();
            const int told = m_Notices.pullOuts;
            EXPECT_TRUE(m_Cell.moment == Moment::kAfter ? told == 1 : told <= 1) << told;
            ExpectGoodEnd();
            Leave();
            EXPECT_EQ(m_Notices.pullOuts, told);
            EXPECT_EQ(TerminalDescriptors(), 0U);
        }
    }

    const std::size_t m_Threads = SettledThreads();
    const std::size_t m_Descriptors = OpenDescriptors();
    TerminalNotices& m_Notices = TerminalNotices::Get();
    int m_Rounds = 0;
    int m_RoundsFirst = 0; // in which the operation came before the pull-out
};

std::string NameOfParameter(const testing::TestParamInfo<Cell>& info) { return NameOf(info.param); }

} // namespace

TEST_P(UnpluggingTerminals, TellsOnceAndNothingHangsSpinsOrIsLeft) {
    if (m_Cell.operation == Operation::kRelease) {
        RunReleases();
    } else {
        RunRounds();
    }
}

INSTANTIATE_TEST_SUITE_P(OfTheKernel, UnpluggingTerminals, testing::ValuesIn(Cells()),
                         NameOfParameter);

TEST(UnplugMatrix, OfTerminalsHasEachOperationAtEachMoment) {
    EXPECT_EQ(Cells().size(), 10U * 4U * 2U);
}
