// SPDX-License-Identifier: MIT
#include "tests/unit/manager/manager_test.h"

namespace {

class PortState : public ManagerTest {
  protected:
    std::vector<int> States() {
        std::vector<int> states;
        for (const int port : {-1, 0, 1, 2, 99}) {
            states.push_back(m_Manager.GetPortState(port));
        }
        return states;
    }
};

} // namespace

TEST_F(PortState, BeforeInitIsNotReadyForEveryIdentifier) {
    EXPECT_EQ(States(), std::vector<int>(5, 20053));
}

TEST_F(PortState, AfterInitIsReadyForEveryIdentifierOpenOrNot) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    EXPECT_EQ(States(), std::vector<int>(5, 20050));
}

TEST_F(PortState, AfterReleaseIsNotReadyAgain) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(States(), std::vector<int>(5, 20053));
}
