// SPDX-License-Identifier: MIT
//
// The file of counters, as a program finds it that knows OSAdaptSpy.h.
#include <unistd.h>

#include <cstring>
#include <memory>

#include "OSAdaptSpy.h"
#include "tests/spy/spy_bench.h"

namespace {

class SpyCounters : public SpyBench {
  protected:
    std::unique_ptr<OSADAPT_SPY_COUNTERS> Counters() const {
        const std::string text =
            FileText(m_Scratch.Path() + "/kovasmgr-spy/" + std::to_string(getpid()) + "/counters");
        auto counters = std::make_unique<OSADAPT_SPY_COUNTERS>();
        EXPECT_EQ(sizeof *counters, text.size());
        std::memcpy(counters.get(), text.data(), sizeof *counters);
        return counters;
    }

    FakeAdapterLibrary m_Fake{FakeFile()};
};

} // namespace

TEST_F(SpyCounters, DescribeThemselves) {
    const AdapterUnderTest spy(KOVASMGR_SPY);
    spy.Devices();
    const auto counters = Counters();
    EXPECT_STREQ(OSADAPT_SPY_MAGIC, counters->szMagic);
    EXPECT_EQ(1U, counters->nVersion);
    EXPECT_EQ(558688U, counters->nSize);
    EXPECT_EQ(getpid(), counters->nProcess);
    EXPECT_EQ(FakeFile(), counters->szAdapter);
    EXPECT_EQ(0U, counters->nPortCount);
    EXPECT_EQ(1U, counters->stAdapter.stCalls[OSADAPT_SPY_ENUMERATE].nCalls);
}

TEST_F(SpyCounters, PortsBeyondTheLastRecordAreCountedTogether) {
    const AdapterUnderTest spy(KOVASMGR_SPY);
    for (int i = 0; i < OSADAPT_SPY_MAX_PORTS + 6; ++i) {
        ASSERT_EQ(4, spy.WriteText(spy.OpenPort("port" + std::to_string(i)), "abcd"));
    }
    const auto counters = Counters();
    EXPECT_EQ(1024U, counters->nPortCount);
    EXPECT_EQ(6U, counters->nPortsLeftOut);
    EXPECT_STREQ("port1023", counters->stPort[1023].szPortName);
    EXPECT_EQ(4U, counters->stPort[1023].nBytesOut);
    EXPECT_EQ(6U, counters->stAdapter.stCalls[OSADAPT_SPY_OPEN].nCalls);
    EXPECT_EQ(24U, counters->stAdapter.nBytesOut);
}

TEST_F(SpyCounters, LongNamesAreCut) {
    const AdapterUnderTest spy(KOVASMGR_SPY);
    spy.OpenPort(std::string(1000, 'p'));
    spy.OpenPort("");
    EXPECT_EQ(std::string(255, 'p'), Counters()->stPort[0].szPortName);
}

TEST_F(SpyCounters, BeginAnewAfterAnUnRegistration) {
    const AdapterUnderTest spy(KOVASMGR_SPY);
    const int handle = spy.OpenPort("COM1");
    spy.WriteText(handle, "abcd");
    ASSERT_EQ(OS_ADAPT_OK, spy.UnRegister(nullptr));
    spy.OpenPort("COM2");
    spy.WriteText(handle, "ab");
    const auto counters = Counters();
    EXPECT_EQ(2U, counters->nPortCount);
    EXPECT_STREQ("COM1", counters->stPort[0].szPortName);
    EXPECT_EQ(2U, counters->stPort[0].nBytesOut);
    EXPECT_EQ(0U, counters->stPort[0].stCalls[OSADAPT_SPY_OPEN].nCalls);
    EXPECT_STREQ("COM2", counters->stPort[1].szPortName);
}
