// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_VIRTUAL_BENCH_H
#define KOVASMGR_TESTS_ADAPTERS_VIRTUAL_BENCH_H

#include <gtest/gtest.h>

#include <string>

#include "tests/adapters/control_client.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"

/// The surroundings of a virtual adapter: a scratch directory with a log, a control directory with
/// a short name, and a scenario.
class VirtualBench : public testing::Test {
  protected:
    VirtualBench();
    ~VirtualBench() override;

    /// Writes a scenario file and makes the adapter use it.
    /// @return its path
    std::string UseScenario(const std::string& text) const;

    std::string ControlDirectory() const { return m_Control; }
    std::string PortLink(const std::string& port) const { return m_Control + "/ports/" + port; }

    /// Gives one command on a connection of its own.
    /// @return the reply; the last line begins with "ok" or "error"
    std::string Command(const std::string& line) const {
        return ControlClient(m_Control).Ask(line);
    }

    std::string Log() const { return LogText(m_Scratch); }
    int LogLines(const std::string& part) const { return CountOf(Log(), part); }

    /// Two devices with two ports each, all far ends other programs: left(l0 l1) right(r0 r1).
    static const char* const kTwoDevices;

    ScratchDirectory m_Scratch;

  private:
    std::string m_Control;
};

#endif
