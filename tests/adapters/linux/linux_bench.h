// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_LINUX_BENCH_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_LINUX_BENCH_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/linux/mock_machine.h"
#include "tests/adapters/notice_recorder.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"

/// The surroundings of the Linux adapter: a mocked machine, a scratch directory with a log, and
/// nobody's configuration.
class LinuxBench : public testing::Test {
  protected:
    /// @param source  of the adapter's events: "udev" or "kernel"
    explicit LinuxBench(const std::string& source = "kernel");

    std::string Log() const { return LogText(m_Scratch); }
    int LogLines(const std::string& part) const { return CountOf(Log(), part); }

    const ScratchDirectory m_Scratch;
    MockMachine m_Machine;
};

/// The same with the adapter loaded.
class LoadedBench : public LinuxBench {
  protected:
    using Notices = std::vector<std::string>;

    explicit LoadedBench(const std::string& source = "kernel") : LinuxBench(source) {}
    ~LoadedBench() override { m_Adapter.UnRegister(NoticeRecorder::OnNotice); }

    /// As the manager does: a first enumeration, then the registration.
    void Start() const;

    /// Waits for these notices; that no further one comes is checked by plugging a device that must
    /// be the next. On a busy machine a part of what happened together may be told earlier: before
    /// a notice there may be others of its kind.
    void ExpectNotices(const Notices& expected);

    std::string Devices() const { return m_Adapter.DevicesText(); }

    AdapterUnderTest m_Adapter{KOVASMGR_LINUX_ADAPTER};
    NoticeRecorder m_Recorder{m_Adapter};
};

/// Each test once with events from udevd and once with the kernel's.
class EitherSource : public LoadedBench, public testing::WithParamInterface<const char*> {
  protected:
    EitherSource() : LoadedBench(GetParam()) {}
};

#define KOVASMGR_EITHER_SOURCE(fixture)                                                            \
    INSTANTIATE_TEST_SUITE_P(With, fixture, testing::Values("udev", "kernel"),                     \
                             [](const auto& source) { return std::string(source.param); })

#endif
