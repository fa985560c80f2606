// SPDX-License-Identifier: MIT
#include "tests/proof/soak/soak_adapter.h"

#include <fcntl.h>
#include <stdlib.h>

#include <array>
#include <cerrno>
#include <mutex>
#include <stdexcept>
#include <string>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/port_source.h"
#include "adapters/shared/terminal.h"
#include "tests/proof/soak/faults.h"

namespace {

constexpr int kTerminalFlags = O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK;

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what + ": " + ErrnoText(errno));
}

UniqueFd OpenTerminalAt(const std::string& path) {
    UniqueFd terminal(open(path.c_str(), kTerminalFlags));
    if (!terminal.IsOpen() || MakeRaw(terminal.Get()) != 0) {
        Fail("cannot open " + path);
    }
    return terminal;
}

/// A device and both ends of its port. The adapter keeps the near end open as well, so that what is
/// on its way stays there while no host has the port open.
struct SoakDevice {
    SoakDevice() : farEnd(posix_openpt(kTerminalFlags)) {
        char name[64] = "";
        if (!farEnd.IsOpen() || grantpt(farEnd.Get()) != 0 || unlockpt(farEnd.Get()) != 0 ||
            ptsname_r(farEnd.Get(), name, sizeof name) != 0) {
            Fail("no pseudo-terminal");
        }
        path = name;
        nearEnd = OpenTerminalAt(path);
    }

    UniqueFd farEnd;
    UniqueFd nearEnd;
    std::string path;
    uint64_t arrival = 1; // 0: not there
};

class SoakPorts : public PortSource {
  public:
    SoakPorts(HandleTable& handles, StateNotifier& notifier)
        : m_Handles(handles), m_Notifier(notifier) {
        m_Notifier.Publish(Table());
    }

    int Open(const std::string& portName) override {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        for (const SoakDevice& device : m_Devices) {
            if (device.path == portName && device.arrival != 0) {
                return m_Handles.Add(portName,
                                     std::make_shared<OpenTerminal>(OpenTerminalAt(portName)));
            }
        }
        throw std::runtime_error("it is not there");
    }

    void SetPresent(std::size_t device, bool isPresent) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Devices[device].arrival = isPresent ? ++m_LastArrival : 0;
        if (!isPresent) {
            m_Handles.KillPort(m_Devices[device].path);
        }
        m_Notifier.Publish(Table());
    }

    int FarEnd(std::size_t device) const { return m_Devices[device].farEnd.Get(); }

    void Stop() override;

  private:
    PortTable Table() const {
        PortTable table;
        for (std::size_t i = 0; i < kDevices; ++i) {
            if (m_Devices[i].arrival != 0) {
                table.push_back(DeviceEntry{std::to_string(i),
                                            i < kStays ? "stays" : "comes and goes",
                                            {{m_Devices[i].path, 0, m_Devices[i].arrival}}});
            }
        }
        return table;
    }

    HandleTable& m_Handles;
    StateNotifier& m_Notifier;
    std::mutex m_Mutex; // guards what follows; taken before the notifier's and the handles'
    std::array<SoakDevice, kDevices> m_Devices;
    uint64_t m_LastArrival = 1;
};

SoakPorts* g_Ports = nullptr;

void SoakPorts::Stop() { g_Ports = nullptr; }

class Control : public SoakAdapterControl {
  public:
    void SetPresent(std::size_t device, bool isPresent) override {
        g_Ports->SetPresent(device, isPresent);
    }
    int FarEnd(std::size_t device) const override { return g_Ports->FarEnd(device); }
    void SwitchFaults(bool isOn) override { faults::SwitchOn(isOn); }
    long FaultsInjected() const override { return faults::Injected(); }
};

Control g_Control;

} // namespace

std::shared_ptr<PortSource> StartPortSource(HandleTable& handles, StateNotifier& notifier) {
    auto ports = std::make_shared<SoakPorts>(handles, notifier);
    g_Ports = ports.get();
    return ports;
}

SoakAdapterControl* SoakAdapter_Control() { return &g_Control; }
