// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_STATUS_H
#define KOVASCTL_SIM_STATUS_H

#include <optional>
#include <string>

/// How far a simulation is.
struct SimStatus {
    double seconds = 0; // by the scenario's clock
    double speed = 1;
    bool isPaused = false;
    bool hasEnded = false;
};

/// Whether a control directory's name is short enough for a socket in it.
bool CanBeAsked(const std::string& directory);

/// Asks a simulation by its control directory, and waits a second for the answer at most.
/// @return nothing when there is none
std::optional<SimStatus> AskSimulation(const std::string& directory);

#endif
