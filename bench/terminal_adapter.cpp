// SPDX-License-Identifier: MIT
//
// Pairs of pseudo-terminals behind what all adapters share: what is measured is what a real adapter
// does to read and deliver. The host's end is the slave, which is opened by its name and set up as a
// serial port is.
#include "bench/terminal_adapter.h"

#include <fcntl.h>
#include <stdlib.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <vector>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/port_source.h"
#include "adapters/shared/terminal.h"

namespace {

int g_Devices = 0;
int g_PortsEach = 0;
std::vector<UniqueFd>* g_FarEnds = nullptr;
std::atomic<long> g_Reads{0}; // written by the read thread only

[[noreturn]] void Fail(const std::string& what, int error) {
    throw std::runtime_error(what + ": " + ErrnoText(error) +
                             "; see /proc/sys/kernel/pty/max and ulimit -n");
}

UniqueFd MakeFarEnd() {
    UniqueFd master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    if (!master.IsOpen() || grantpt(master.Get()) != 0 || unlockpt(master.Get()) != 0) {
        Fail("no pseudo-terminal", errno);
    }
    return master;
}

std::string NameOf(const UniqueFd& master) {
    char path[64] = "";
    if (const int error = ptsname_r(master.Get(), path, sizeof path); error != 0) {
        Fail("pseudo-terminal has no name", error);
    }
    return path;
}

class TerminalPorts : public PortSource {
  public:
    TerminalPorts(HandleTable& handles, StateNotifier& notifier) : m_Handles(handles) {
        PortTable table;
        for (int i = 0; i < g_Devices; ++i) {
            table.push_back(MakeDevice("device" + std::to_string(i + 1)));
        }
        g_FarEnds = &m_FarEnds;
        notifier.Publish(table);
    }

    int Open(const std::string& portName) override {
        UniqueFd terminal(open(portName.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
        if (!terminal.IsOpen() || MakeRaw(terminal.Get()) != 0) {
            Fail("cannot open " + portName, errno);
        }
        return m_Handles.Add(portName, std::make_shared<OpenTerminal>(std::move(terminal)));
    }

    void Stop() override { g_FarEnds = nullptr; }

  private:
    DeviceEntry MakeDevice(const std::string& name) {
        DeviceEntry device{name, "pseudo-terminals", {}};
        for (int i = 0; i < g_PortsEach; ++i) {
            m_FarEnds.push_back(MakeFarEnd());
            device.ports.push_back(PortEntry{NameOf(m_FarEnds.back())});
        }
        return device;
    }

    HandleTable& m_Handles;
    std::vector<UniqueFd> m_FarEnds;
};

} // namespace

std::shared_ptr<PortSource> StartPortSource(HandleTable& handles, StateNotifier& notifier) {
    return std::make_shared<TerminalPorts>(handles, notifier);
}

void TerminalAdapter_SetTable(int devices, int portsEach) {
    g_Devices = devices;
    g_PortsEach = portsEach;
}

int TerminalAdapter_FarEnd(int port) { return g_FarEnds->at(static_cast<size_t>(port)).Get(); }

long TerminalAdapter_Reads() { return g_Reads; }

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    g_Reads.store(g_Reads.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return TerminalAdapter_Read(handle, buffer, size, read);
}
