// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_UNIT_MANAGER_SWEEP_TEST_H
#define KOVASMGR_TESTS_UNIT_MANAGER_SWEEP_TEST_H

#include "tests/unit/manager/manager_test.h"

/// A manager without its read thread; the test sweeps in its place.
class SweepTest : public ManagerTest {
  protected:
    void Sweep() { ManagerProbe::SweepPorts(m_Manager, m_Buffer, m_nLength); }

    /// One sweep, and what the callbacks were told in it.
    Lines ToldBySweep() {
        const size_t before = m_Recorder.Count();
        Sweep();
        const Lines told = m_Recorder.Told();
        return Lines(told.begin() + static_cast<std::ptrdiff_t>(before), told.end());
    }

    void Register(int port, KOVAMGR_READ_CALLBACK cb) {
        ASSERT_EQ(m_Manager.RegisterReadCallBack(port, cb), KOVAMGR_OK);
    }
    void Open(int port) { ASSERT_EQ(m_Manager.Open(port), KOVAMGR_OK); }

    char m_Buffer[4097] = {};
    long m_nLength = 0;
};

#endif
