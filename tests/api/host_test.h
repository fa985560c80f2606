// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_API_HOST_TEST_H
#define KOVASMGR_TESTS_API_HOST_TEST_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "KOVASMgr.h"
#include "tests/api/callback_recorder.h"
#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/fake_devices.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"

using Lines = std::vector<std::string>;

/// A host in a directory of its own, with a scripted adapter there; the library is not initialised.
class HostTest : public testing::Test {
  public:
    ~HostTest() override {
        KOVAMGR_Release();
        m_Recorder.Forget();
    }

  protected:
    int Init() { return KOVAMGR_Init(m_Scratch.LogDirectory().c_str()); }

    void InitWith(const FakeDevices& devices) {
        devices.Apply(*m_Fake);
        ASSERT_EQ(Init(), KOVAMGR_OK);
        m_Fake->ClearJournal();
    }

    /// "Modem: COM1 = 1, COM2 = 2" for each device that the library shows.
    static Lines Devices() {
        const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
        EXPECT_EQ(KOVAMGR_EnumeratePortInfo(list.get()), KOVAMGR_OK);
        Lines lines;
        for (unsigned d = 0; d < list->nDeviceCount && d < KOVAMGR_MAX_DEVICES; ++d) {
            const _KOVAMGR_DEVICEINFO& device = list->stDevice[d];
            std::string line = device.szDeviceName;
            for (unsigned p = 0; p < device.nPortCount; ++p) {
                line += (p == 0 ? ": " : ", ") + std::string(device.stPort[p].szPortName) + " = " +
                        std::to_string(device.stPort[p].nPortID);
            }
            lines.push_back(line);
        }
        return lines;
    }

    bool WaitForTold(size_t count) {
        return WaitUntil([&] { return m_Recorder.Count() >= count; });
    }

    ScratchDirectory m_Scratch{"complete"};
    FakeAdapterLibrary m_Fake;
    CallbackRecorder& m_Recorder = CallbackRecorder::Get();
};

/// The line of the log that the library writes with this text.
inline std::string Info(const std::string& text) { return "[TIME] INFO:" + text + "\n"; }

#endif
