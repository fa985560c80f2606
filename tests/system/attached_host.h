// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_SYSTEM_ATTACHED_HOST_H
#define KOVASMGR_TESTS_SYSTEM_ATTACHED_HOST_H

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "KOVASMgr.h"
#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/fake_devices.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"
#include "tests/system/settled_threads.h"

/// A host of the shared library with the scripted adapter, to which one device with two ports,
/// COM1 (identifier 1) and COM2 (2), is attached.
class AttachedHost : public testing::Test {
  protected:
    AttachedHost();
    ~AttachedHost() override;

    int Init() const { return KOVAMGR_Init(m_Scratch.LogDirectory().c_str()); }

    /// Initialises and opens both ports.
    void InitAndOpen() const;

    /// The seconds that KOVAMGR_Release takes on a thread of its own; nothing when it has not
    /// returned after 20 s.
    static std::optional<double> SecondsOfRelease();

    /// Initialises, sees data, a write and a notice through, and releases quickly.
    void CheckThatANewManagerWorks();

    int LogLines(const std::string& part) const { return CountOf(LogText(m_Scratch), part); }

    /// How often a line stands in the adapter's journal.
    int JournalLines(const std::string& line) const;

    static std::unique_ptr<_KOVAMGR_DEVICEINFOLIST> Enumerate();

    const std::size_t m_Threads = SettledThreads(); ///< before anything is initialised
    ScratchDirectory m_Scratch{"complete"};
    FakeAdapterLibrary m_Fake;
};

#endif
