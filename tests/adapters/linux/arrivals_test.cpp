// SPDX-License-Identifier: MIT
#include "adapters/linux/arrivals.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using Names = std::vector<std::string>;

PortFacts Facts(const std::string& device, int interface) {
    PortFacts facts;
    facts.devicePath = "/sys/devices/" + device;
    facts.sysPath = facts.devicePath + "/" + std::to_string(interface) + "/tty/tty";
    facts.node = device + std::to_string(interface);
    facts.place = device;
    facts.interfaceNumber = interface;
    return facts;
}

class ArrivalsTest : public testing::Test {
  protected:
    void Announce(const PortFacts& facts, uint64_t sequence = 0) {
        m_Arrivals.Announce(facts.sysPath, sequence, m_Now);
    }

    void Complete(const PortFacts& facts) { m_Arrivals.Complete(facts, 0, m_Now); }

    Names Ready() {
        Names names;
        for (const Arrivals::Port& port : m_Arrivals.TakeReady(m_Now)) {
            names.push_back(port.facts.node);
        }
        return names;
    }

    Arrivals m_Arrivals;
    Arrivals::Instant m_Now{};
};

} // namespace

TEST_F(ArrivalsTest, APortThatNobodyElseAnnouncedIsReadyAtOnce) {
    Complete(Facts("a", 0));
    EXPECT_EQ(Names{"a0"}, Ready());
    EXPECT_EQ(Names{}, Ready());
    EXPECT_EQ(std::nullopt, m_Arrivals.Due());
}

TEST_F(ArrivalsTest, PortsOfADeviceWaitForEachOtherAndComeInTheOrderOfTheirInterfaces) {
    for (const int interface : {0, 1, 2}) {
        Announce(Facts("a", interface));
    }
    Complete(Facts("a", 2));
    Complete(Facts("a", 0));
    EXPECT_EQ(Names{}, Ready());
    Complete(Facts("a", 1));
    EXPECT_EQ((Names{"a0", "a1", "a2"}), Ready());
}

TEST_F(ArrivalsTest, ThePortsOfAnotherDeviceAreNotWaitedFor) {
    Announce(Facts("a", 0));
    Announce(Facts("ab", 0));
    Complete(Facts("a", 0));
    EXPECT_EQ(Names{"a0"}, Ready());
}

TEST_F(ArrivalsTest, TheWaitingForOthersEndsForAllWithThatOfTheFirst) {
    for (const int interface : {0, 1, 2}) {
        Announce(Facts("a", interface));
    }
    Complete(Facts("a", 2));
    EXPECT_EQ(m_Now + Arrivals::kTogether, m_Arrivals.Due());
    m_Now += Arrivals::kTogether - milliseconds(1);
    Complete(Facts("a", 1));
    EXPECT_EQ(Names{}, Ready());
    m_Now += milliseconds(1);
    EXPECT_EQ((Names{"a1", "a2"}), Ready());
    Complete(Facts("a", 0));
    EXPECT_EQ(Names{"a0"}, Ready());
}

TEST_F(ArrivalsTest, APortThatIsDroppedIsNotWaitedFor) {
    Announce(Facts("a", 0));
    Announce(Facts("a", 1));
    Complete(Facts("a", 1));
    m_Arrivals.Drop(Facts("a", 0).sysPath);
    EXPECT_EQ(Names{"a1"}, Ready());
}

TEST_F(ArrivalsTest, OnlyThePortsThatWaitForOthersCanBeDroppedTogether) {
    Announce(Facts("a", 0), 5);
    Complete(Facts("a", 1));
    m_Arrivals.DropComplete();
    EXPECT_EQ(5U, m_Arrivals.SequenceOf(Facts("a", 0).sysPath));
    EXPECT_EQ(std::nullopt, m_Arrivals.SequenceOf(Facts("a", 1).sysPath));
}

TEST_F(ArrivalsTest, AnAnnouncedPortIsOverdueWhenThePatienceEnds) {
    const std::string path = Facts("a", 0).sysPath;
    Announce(Facts("a", 0));
    m_Now += Arrivals::kPatience - milliseconds(1);
    EXPECT_EQ(Names{}, m_Arrivals.TakeOverdue(m_Now));
    EXPECT_FALSE(m_Arrivals.IsOutOfPatience(path, m_Now));
    m_Now += milliseconds(1);
    EXPECT_EQ(Names{path}, m_Arrivals.TakeOverdue(m_Now));
    EXPECT_EQ(Names{}, m_Arrivals.TakeOverdue(m_Now));
    EXPECT_TRUE(m_Arrivals.IsOutOfPatience(path, m_Now));
}

TEST_F(ArrivalsTest, APortThatCouldNotBeReadIsLookedAtAgainUntilThePatienceEnds) {
    const std::string path = Facts("a", 0).sysPath;
    const auto start = m_Now;
    int looks = 0;
    for (m_Arrivals.LookAgain(path, 7, m_Now); !m_Arrivals.IsOutOfPatience(path, m_Now);
         m_Arrivals.LookAgain(path, 7, m_Now)) {
        m_Now = *m_Arrivals.Due();
        ASSERT_EQ(Names{path}, m_Arrivals.TakeOverdue(m_Now));
        ++looks;
    }
    EXPECT_EQ(Arrivals::kPatience / Arrivals::kLookAgain, looks);
    EXPECT_EQ(start + Arrivals::kPatience, m_Now);
    EXPECT_EQ(7U, m_Arrivals.SequenceOf(path));
}

TEST_F(ArrivalsTest, TheSequenceNumberIsThatOfTheLastAnnouncement) {
    EXPECT_EQ(std::nullopt, m_Arrivals.SequenceOf(Facts("a", 0).sysPath));
    Announce(Facts("a", 0), 5);
    Announce(Facts("a", 0), 9);
    EXPECT_EQ(9U, m_Arrivals.SequenceOf(Facts("a", 0).sysPath));
}
