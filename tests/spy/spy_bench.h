// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_SPY_SPY_BENCH_H
#define KOVASMGR_TESTS_SPY_SPY_BENCH_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "KOVASMgrLog.h"
#include "tests/adapters/adapter_under_test.h"
#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/fake_devices.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"

/// The surroundings of a spy: a scratch directory with a log, a private runtime directory, and the
/// scripted adapter behind it.
class SpyBench : public testing::Test {
  protected:
    SpyBench() {
        KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str());
        for (const char* const name :
             {"ADAPTER", "RECORD", "PCAP", "FAULTS", "STATS", "IDLE_READS"}) {
            unsetenv((std::string("KOVASMGR_SPY_") + name).c_str());
        }
        setenv("XDG_RUNTIME_DIR", m_Scratch.Path().c_str(), 1);
        Set("ADAPTER", FakeDirectory());
    }

    /// Sets KOVASMGR_SPY_ and the name.
    static void Set(const std::string& name, const std::string& value) {
        setenv(("KOVASMGR_SPY_" + name).c_str(), value.c_str(), 1);
    }

    static std::string FakeFile() { return ScratchDirectory::AdapterFile("complete"); }
    static std::string FakeDirectory() { return FakeFile().substr(0, FakeFile().rfind('/')); }

    /// Makes the spy record, and returns the file.
    std::string Record() const {
        Set("RECORD", m_Scratch.Path() + "/recording.jsonl");
        return m_Scratch.Path() + "/recording.jsonl";
    }

    std::string Log() const { return LogText(m_Scratch); }
    int LogLines(const std::string& part) const { return CountOf(Log(), part); }

    ScratchDirectory m_Scratch;
};

#endif
