// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_UNIT_LOG_LOG_TEST_H
#define KOVASMGR_TESTS_UNIT_LOG_LOG_TEST_H

#include <gtest/gtest.h>

#include <string>

#include "KOVASMgrLog.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"

/// A case with a directory of its own. The log is one per process, and each case has a process of
/// its own.
class LogTest : public testing::Test {
  protected:
    /// Opens the log in the scratch directory's log directory.
    void OpenLog() { ASSERT_EQ(KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str()), 1); }

    std::string Log() const { return LogText(m_Scratch); }

    ScratchDirectory m_Scratch;
};

#endif
