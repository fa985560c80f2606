// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_PROGRESS_H
#define KOVASCTL_SIM_PROGRESS_H

#include <optional>
#include <string>

#include "tools/kovasctl/sim/status.h"
#include "tools/kovasctl/waiting.h"

/// Follows a simulation, and gives it up when it has never answered.
class SimProgress {
  public:
    /// @param control  its control directory
    /// @param seconds  from now on, for its first answer
    /// @throws Failure when nothing can be reached there
    SimProgress(const std::string& control, double seconds);

    /// @return nothing when there is no answer
    std::optional<SimStatus> Ask();

    /// Whether it has been asked in vain for all its time. Once there was an answer, never.
    bool IsOutOfReach() const { return m_IsOutOfReach; }

    /// "the simulation does not answer in ...".
    std::string Trouble() const;

  private:
    std::string m_Control;
    Deadline m_First;
    bool m_IsOutOfReach = false;
};

#endif
