// SPDX-License-Identifier: MIT
//
// What a simulation needs around it: the variables that the virtual adapter reads, a place for its
// commands, descriptors.
#ifndef KOVASCTL_SIM_SURROUNDINGS_H
#define KOVASCTL_SIM_SURROUNDINGS_H

#include <string>

/// What the adapter is told. Texts as a person gave them; empty: the scenario's own, or none.
struct SimSettings {
    std::string scenario; // a file
    std::string seed;
    std::string speed;
    std::string events;    // where the event log goes
    std::string recording; // where the spy's recording goes
};

/// Sets the adapter's variables, for this process and its children, and those of a spy before it.
/// File names become absolute. Those of the simulator's variables that a person had set and that are
/// not given here go.
/// @param simulator  the adapter's directory
void SetVariables(const SimSettings& settings, const std::string& simulator);

/// Where commands reach the simulation: the directory that KOVASMGR_VIRTUAL_DIR names if it is set,
/// else one by this process's identifier, where kovasmgr-virtual finds it. In that case it sets the
/// variable, so that a host in a process of its own and the commands of its children meet there,
/// and in the end removes what a killed host has left.
class SimControl {
  public:
    /// @throws Failure when the place for it cannot be made
    SimControl();
    ~SimControl();
    SimControl(const SimControl&) = delete;
    SimControl& operator=(const SimControl&) = delete;

    const std::string& Path() const { return m_Path; }

  private:
    std::string m_Path;
    bool m_IsOurs = false;
};

/// Raises this process's own limit of descriptors to what it may have: a thousand ports need three
/// each.
void RaiseDescriptorLimit();

#endif
