// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SESSION_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SESSION_H

#include <atomic>
#include <memory>
#include <string>

#include "adapters/shared/handle_table.h"
#include "adapters/shared/port_source.h"
#include "adapters/shared/state_notifier.h"
#include "adapters/shared/unique_fd.h"
#include "adapters/shared/worker_thread.h"
#include "adapters/virtual/control/control_directory.h"
#include "adapters/virtual/control/control_server.h"
#include "adapters/virtual/ports/virtual_ports.h"
#include "adapters/virtual/simulation/director.h"
#include "adapters/virtual/simulation/simulation.h"

/// Everything that lives from the first use of the adapter to its un-registration: the scenario that
/// runs, its devices, control directory and socket, and the thread that serves them. The thread never calls the host, so it
/// can always be waited for.
class Session final : public PortSource {
  public:
    /// A scenario with a mistake gives a session without devices; a control directory that cannot
    /// be had, one without commands and links. Both are logged.
    /// @throws std::runtime_error when there is no thread or descriptor to run it
    Session(HandleTable& handles, StateNotifier& notifier);

    ~Session() override { Stop(); }

    /// Ends the thread, kills all handles, closes all lines, removes what is in the file system and
    /// writes the events.
    /// Calls of Open and Wake may overlap with it; they find no ports. By one thread, which is not
    /// the service thread.
    void Stop() override;

    /// As VirtualPorts::Open. Any thread.
    int Open(const std::string& portName) override;

    /// Makes the service thread look at everything anew. Any thread; takes no lock.
    void Wake() override;

  private:
    void OpenControl();
    static void Enter(void* self);
    static void WakeSelf(void* self);
    void Run();
    void ServeOnce();
    void Pause();
    void DrainWake();

    StateNotifier& m_Notifier;
    UniqueFd m_Wake; // an event counter
    std::unique_ptr<ControlDirectory> m_Directory;
    std::unique_ptr<ControlServer> m_Server;
    std::shared_ptr<Simulation> m_Simulation;
    std::unique_ptr<VirtualPorts> m_Ports;
    std::unique_ptr<Director> m_Director;
    std::atomic<bool> m_Stop{false};
    WorkerThread m_Thread;
};

#endif
