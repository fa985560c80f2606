// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_UNIT_MANAGER_MANAGER_TEST_H
#define KOVASMGR_TESTS_UNIT_MANAGER_MANAGER_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KOVASMgrLog.h"
#include "manager/osadapt_binding.h"
#include "manager/port_manager.h"
#include "tests/api/callback_recorder.h"
#include "tests/harness/fake_adapter_library.h"
#include "tests/harness/fake_devices.h"
#include "tests/harness/log_text.h"
#include "tests/harness/manager_probe.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"

using Lines = std::vector<std::string>;

/// The process's manager, made but not initialised, with a scripted adapter in the current
/// directory and an open log.
class ManagerTest : public testing::Test {
  public:
    ManagerTest() { KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str()); }
    ~ManagerTest() override { CKOVASMgrPort::ReleaseInstance(); }

  protected:
    void InitWith(const FakeDevices& devices) {
        devices.Apply(*m_Fake);
        ASSERT_EQ(m_Manager.Init(), KOVAMGR_OK);
        NewLog();
        m_Fake->ClearJournal();
    }

    /// Everything that Init does but the read thread and the registration: tests that sweep or
    /// rescan themselves have the manager for themselves.
    void LoadWith(const FakeDevices& devices) {
        devices.Apply(*m_Fake);
        ASSERT_TRUE(m_Manager.LoadDll());
        ManagerProbe::IsInit(m_Manager) = 1;
        ManagerProbe::ReadThreadRun(m_Manager) = 1;
        m_Manager.DetermineAddPort();
        NewLog();
        m_Fake->ClearJournal();
    }

    /// The masked lines that were written to the log since the last call.
    std::string NewLog() {
        const std::string text = LogText(m_Scratch);
        const std::string news = text.substr(m_nLogSeen);
        m_nLogSeen = text.size();
        return news;
    }

    /// Frees an adapter object that the manager has replaced.
    static void Free(JLibrary* library) {
        library->unload();
        delete library;
    }

    std::vector<_PORT_> Ports() { return ManagerProbe::CopyOfPreparedPorts(m_Manager); }
    std::vector<_COMM_MGR_DEVICE_INFO_> Tree() { return ManagerProbe::CopyOfDeviceTree(m_Manager); }

    /// "COM1 = 1" for each prepared port.
    Lines PortLines() {
        Lines lines;
        for (const _PORT_& port : Ports()) {
            lines.push_back(port.strPortName + " = " + std::to_string(port.nPortID));
        }
        return lines;
    }

    /// "Modem: COM1 COM2" for each device.
    Lines TreeLines() {
        Lines lines;
        for (const _COMM_MGR_DEVICE_INFO_& device : Tree()) {
            std::string line = std::string(device.szDeviceName) + ":";
            for (const _PORT_& port : device.vecPorts) {
                line += " " + port.strPortName;
            }
            lines.push_back(line);
        }
        return lines;
    }

    ScratchDirectory m_Scratch{"complete"};
    FakeAdapterLibrary m_Fake;
    CallbackRecorder& m_Recorder = CallbackRecorder::Get();
    CKOVASMgrPort& m_Manager = *CKOVASMgrPort::GetInstance();

  private:
    size_t m_nLogSeen = 0;
};

/// The line of the log that an INFO_LOG of this text writes.
inline std::string Info(const std::string& text) { return "[TIME] INFO:" + text + "\n"; }

#endif
