// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_MACHINE_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_MACHINE_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/adapters/linux/mock_device.h"
#include "tests/adapters/linux/mock_events.h"
#include "tests/adapters/linux/mock_ioctls.h"
#include "tests/adapters/linux/mock_system.h"
#include "tests/adapters/linux/mock_terminal.h"

/// What this process sees as the machine: its /sys, the nodes of its ports with a terminal behind
/// each, and the events about them.
///
/// Ports are given by the name of their node: "ttyUSB0".
class MockMachine {
  public:
    /// @param hasUdevd  whether udevd runs: each event of the kernel's is followed by its own
    explicit MockMachine(bool hasUdevd);

    /// A device comes or goes with all its ports, with all events at once.
    void Plug(const MockDevice& device);
    void Pull(const MockDevice& device);
    void PlugPort(const MockDevice& device, const std::string& port);
    void PullPort(const MockDevice& device, const std::string& port);

    // The same step by step.

    /// In /sys and /dev, and no event.
    void Appear(const MockDevice& device);
    void AppearPort(const MockDevice& device, const std::string& port);
    void Vanish(const MockDevice& device);
    void VanishPort(const MockDevice& device, const std::string& port);

    /// An event of one port or of all, with the kernel's number of its own.
    void KernelSays(const std::string& action, const MockDevice& device, const std::string& port);
    void KernelSays(const std::string& action, const MockDevice& device);

    /// udevd has worked on the last event of a port. After "add" the port is initialised.
    void UdevSays(const std::string& action, const MockDevice& device, const std::string& port);
    void UdevSays(const std::string& action, const MockDevice& device);

    /// What udevd leaves in the system when it has worked on a port.
    void Initialize(const MockPort& port);

    /// udevd's word on the last event of a port, to be said later, when the port may be another one.
    std::function<void()> UdevsWord(const std::string& action, const MockPort& port);

    /// An event that says nothing but which port it is about.
    void KernelSaysBarely(const std::string& action, const MockDevice& device,
                          const std::string& port);

    void SetAttribute(const MockEntry& entry, const std::string& name, const std::string& value);

    /// The monitors of all sources fail with this error the next time; ENOBUFS: events were lost.
    void FailMonitors(int error);

    /// What is attached to a port that is present.
    MockTerminal& FarEnd(const std::string& port) { return *m_Terminals.at("/dev/" + port); }

    /// The same, to be kept: what happens to the port later does not hang up the line.
    std::unique_ptr<MockTerminal> TakeFarEnd(const std::string& port) {
        return std::move(m_Terminals.at("/dev/" + port));
    }

    bool HasUdevd() const { return m_HasUdevd; }

  private:
    void LookEverythingUp() const;
    void Write(const MockEntry& entry);
    void AppearPort(const MockPort& port);
    void VanishPort(const MockPort& port);
    void Say(EventSource source, const std::string& action, const MockEntry& entry,
             uint64_t sequence);
    void SayKernel(const std::string& action, const MockEntry& entry);
    void SayUdev(const std::string& action, const MockPort& port);
    void Send();
    uint64_t NextSequence();

    const bool m_HasUdevd;
    MockSystem m_System;
    MockIoctls m_Ioctls{m_System.Root()};
    std::map<std::string, std::unique_ptr<MockTerminal>> m_Terminals; // by node
    std::map<std::string, uint64_t> m_Sequences;                      // of the last event, by path
    uint64_t m_Sequence = 1000;
    std::vector<std::pair<EventSource, EventProperties>> m_Unsent;
};

#endif
