// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_VIRTUAL_PORTS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_VIRTUAL_PORTS_H

#include <cstdint>
#include <mutex>
#include <string>

#include "adapters/shared/handle_table.h"
#include "adapters/shared/state_notifier.h"
#include "adapters/virtual/control/control_directory.h"
#include "adapters/virtual/ports/poll_set.h"
#include "adapters/virtual/ports/workbench.h"
#include "adapters/virtual/simulation/simulation.h"

/// The devices of a session: plugged and pulled by commands, opened by the host, served by the
/// service thread.
///
/// The commands throw std::runtime_error with a reason for the person who gave them, and return the
/// ticket of the notice (see StateNotifier::IsTold). Each change is done before it is told: handles
/// of a port that goes are dead, and lines of a port that comes are open.
///
/// Threads: any; Watch and Serve only the one that gives commands.
class VirtualPorts {
  public:
    /// Plugs in what the scenario wants present. A device that cannot be plugged in is logged.
    /// @param links  where the far ends are linked; null for nowhere; not used after RemoveAll
    /// @param simulation  must outlive this object
    VirtualPorts(Simulation& simulation, HandleTable& handles, StateNotifier& notifier,
                 ControlDirectory* links);
    VirtualPorts(const VirtualPorts&) = delete;
    VirtualPorts& operator=(const VirtualPorts&) = delete;

    uint64_t Plug(const std::string& deviceName);
    uint64_t Pull(const std::string& deviceName);
    uint64_t Replug(const std::string& deviceName);

    /// To the mode that the device starts in or one that a port of it names. When the ports of that
    /// mode cannot be had, the device stays in the mode before; if those cannot be had any more
    /// either, it is pulled out.
    uint64_t SwitchMode(const std::string& deviceName, const std::string& mode);

    uint64_t PlugPort(const std::string& portName);
    uint64_t UnplugPort(const std::string& portName);

    /// The far end sends; see Line::Send.
    void Send(const std::string& portName, const std::string& bytes);

    /// Whether the far end takes nothing any more.
    void SetStalled(const std::string& portName, bool stalled);

    /// Whether the port does not work while it stays in the list: an open handle is dead, and
    /// openings fail.
    void SetBroken(const std::string& portName, bool broken);

    /// One line for each device and port.
    std::string List();

    /// Opens a port for the host.
    /// @return the handle
    /// @throws std::runtime_error with the reason
    int Open(const std::string& portName);

    /// Takes everything away for good, without a notice.
    void RemoveAll();

    /// Adds what all lines wait for, and serves them afterwards.
    void Watch(PollSet& waiting);
    void Serve(const PollSet& waited);

  private:
    using Device = Workbench::Device;
    using Port = Workbench::Port;

    Device& NeedDevice(const std::string& name);
    Port& NeedPort(const std::string& name);
    void RemoveLines(Device& device);
    void MakeLines(Device& device);
    uint64_t AddLines(Device& device);
    void TakeOut(Device& device);
    void PutBack(Device& device);
    void Link(const Port& port);
    void PublishGone();
    uint64_t Publish();
    ScenarioTime End() const;

    Simulation& m_Simulation;
    HandleTable& m_Handles;
    StateNotifier& m_Notifier;
    ControlDirectory* m_Links;
    std::mutex m_Mutex; // guards the workbench
    Workbench m_Bench;
    bool m_SaidLeftOut = false;
};

#endif
