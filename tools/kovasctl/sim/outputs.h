// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_OUTPUTS_H
#define KOVASCTL_SIM_OUTPUTS_H

#include <string>

#include "tools/kovasctl/sim/surroundings.h"

/// The files that a run is asked to leave: the event log, the recording. What is in them afterwards
/// is of this run.
class SimOutputs {
  public:
    /// Creates or empties them.
    /// @throws WrongUse when one cannot be written, is another of them, the scenario or what the
    ///         scenario plays, or is no regular file
    explicit SimOutputs(const SimSettings& settings);

    /// After the run: tells which of them have nothing in them.
    /// @return the status that was given; a failure when it was none and a file has nothing in it
    int Look(int status) const;

  private:
    std::string m_Events; // absolute; empty: none is wanted
    std::string m_Recording;
};

#endif
