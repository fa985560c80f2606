// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/progress.h"

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/printable.h"

SimProgress::SimProgress(const std::string& control, double seconds)
    : m_Control(control), m_First(After(seconds)) {
    if (!CanBeAsked(control)) {
        throw Failure("the simulation cannot be reached, the path is too long for a socket: " +
                      Printable(control) + "; name a shorter one by KOVASMGR_VIRTUAL_DIR");
    }
}

std::optional<SimStatus> SimProgress::Ask() {
    const std::optional<SimStatus> status = AskSimulation(m_Control);
    if (status) {
        m_First.reset();
    }
    m_IsOutOfReach = IsOver(m_First);
    return status;
}

std::string SimProgress::Trouble() const {
    return "the simulation does not answer in " + Printable(m_Control);
}
