// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/linux_bench.h"

#include <stdlib.h>

#include "KOVASMgrLog.h"
#include "tests/harness/wait_until.h"

namespace {

// Each expected notice, with others of its kind before it or not.
bool MatchedBy(const std::vector<std::string>& notices, const std::vector<std::string>& expected) {
    size_t matched = 0;
    for (const std::string& notice : notices) {
        if (matched == expected.size() || notice[0] != expected[matched][0]) {
            return false;
        }
        matched += notice == expected[matched] ? 1 : 0;
    }
    return matched == expected.size();
}

std::string Join(const std::string& left, const std::string& right) {
    return left.empty() ? right : left + " " + right;
}

} // namespace

LinuxBench::LinuxBench(const std::string& source) : m_Machine(source == "udev") {
    setenv("OSADAPT_EVENTS", source.c_str(), 1);
    setenv("HOME", m_Scratch.Path().c_str(), 1);
    setenv("XDG_CONFIG_HOME", m_Scratch.Path().c_str(), 1);
    setenv("XDG_CONFIG_DIRS", m_Scratch.Path().c_str(), 1);
    unsetenv("OSADAPT_LINE");
    KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str());
}

void LoadedBench::Start() const {
    m_Adapter.Devices();
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
}

void LoadedBench::ExpectNotices(const Notices& expected) {
    ASSERT_TRUE(WaitUntil([&] { return MatchedBy(m_Recorder.Notices(), expected); }))
        << testing::PrintToString(m_Recorder.Notices()) << "\ninstead of\n"
        << testing::PrintToString(expected);
    Notices all = expected;
    all.push_back("+ " + Join(Devices(), "last 1(/dev/ttyUSB99)"));
    m_Machine.Plug(MockDevice::Usb("9-9").Texts("", "last", "1").Port("ttyUSB99", 0, "ftdi_sio"));
    ASSERT_TRUE(WaitUntil([&] {
        const Notices notices = m_Recorder.Notices();
        return !notices.empty() && notices.back() == all.back();
    })) << testing::PrintToString(m_Recorder.Notices());
    EXPECT_TRUE(MatchedBy(m_Recorder.Notices(), all))
        << testing::PrintToString(m_Recorder.Notices()) << "\ninstead of\n"
        << testing::PrintToString(all);
}
