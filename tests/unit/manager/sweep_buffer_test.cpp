// SPDX-License-Identifier: MIT
#include <algorithm>
#include <climits>

#include "tests/unit/manager/sweep_test.h"

namespace {

// The latest data with the byte behind them.
std::string s_DataAndNextByte;

void KeepDataAndNextByte(void* data, int length) {
    s_DataAndNextByte.assign(static_cast<const char*>(data), static_cast<size_t>(length) + 1);
}

class SweepBuffer : public SweepTest {
  protected:
    void SetUp() override {
        LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
        Register(1, OnRead<1>);
        Register(2, OnRead<2>);
        Open(1);
    }

    void PushCount(const std::string& bytes, long count) {
        m_Fake->PushRead("COM1", {bytes, count, true, OS_ADAPT_OK});
    }
};

} // namespace

TEST_F(SweepBuffer, AReadOf4096BytesReachesTheCallbackWithAZeroByteBehindIt) {
    Register(1, KeepDataAndNextByte);
    std::fill(std::begin(m_Buffer), std::end(m_Buffer), 'x');
    m_Fake->PushData("COM1", std::string(4096, 'a'));
    Sweep();
    EXPECT_EQ(s_DataAndNextByte, std::string(4096, 'a') + std::string(1, '\0'));
}

TEST_F(SweepBuffer, AShortReadHasAZeroByteBehindItAsWell) {
    Register(1, KeepDataAndNextByte);
    m_Fake->PushData("COM1", "longer");
    m_Fake->PushData("COM1", "one");
    Sweep();
    Sweep();
    EXPECT_EQ(s_DataAndNextByte, std::string("one\0", 4));
}

TEST_F(SweepBuffer, TheAdapterIsAskedForAtMost4096Bytes) {
    m_Fake->PushData("COM1", std::string(5000, 'a'));
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: " + std::string(4096, 'a')}));
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: " + std::string(904, 'a')}));
}

TEST_F(SweepBuffer, IsZeroedBeforeEachRead) {
    m_Fake->PushData("COM1", "abcdef");
    Sweep();
    PushCount("x", 6);
    EXPECT_EQ(ToldBySweep(), (Lines{std::string("read 1: x\0\0\0\0\0", 14)}));
}

TEST_F(SweepBuffer, IsZeroedBetweenTwoPortsOfOneSweep) {
    Open(2);
    m_Fake->PushData("COM1", "abcdef");
    m_Fake->PushRead("COM2", {"", 3, true, OS_ADAPT_OK});
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: abcdef", std::string("read 2: \0\0\0", 11)}));
}

TEST_F(SweepBuffer, ALengthAbove4096IsCut) {
    const std::string data(4096, 'a');
    for (const long count : {4097L, 5000L, static_cast<long>(INT_MAX), LONG_MAX, (1L << 32) + 5}) {
        PushCount(data, count);
        EXPECT_EQ(ToldBySweep(), (Lines{"read 1: " + data})) << count;
    }
}

TEST_F(SweepBuffer, ANegativeLengthIsNoneHoweverLarge) {
    for (const long count : {-1L, static_cast<long>(INT_MIN), LONG_MIN, -(1L << 32) + 5}) {
        PushCount("abc", count);
        EXPECT_EQ(ToldBySweep(), Lines()) << count;
    }
}

TEST_F(SweepBuffer, ACountThatIsNotSetRepeatsTheEarlierOne) {
    m_Fake->PushData("COM1", "abcd");
    Sweep();
    m_Fake->PushRead("COM1", {"12345", {}, false, OS_ADAPT_OK});
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: 1234"}));
}

TEST_F(SweepBuffer, ACountThatIsNotSetRepeatsThatOfAnotherPort) {
    Open(2);
    m_Fake->PushData("COM1", "abcd");
    m_Fake->PushRead("COM2", {"12345", {}, false, OS_ADAPT_OK});
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: abcd", "read 2: 1234"}));
}

TEST_F(SweepBuffer, ACutLengthIsRepeatedCut) {
    PushCount("a", 5000);
    Sweep();
    m_Fake->PushRead("COM1", {std::string(4096, 'b'), {}, false, OS_ADAPT_OK});
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: " + std::string(4096, 'b')}));
}

TEST_F(SweepBuffer, ZeroBytesAreDataLikeOthers) {
    const std::string data("\0a\0", 3);
    m_Fake->PushData("COM1", data);
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: " + data}));
}
