// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_PORTS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_PORTS_H

#include <map>
#include <string>
#include <vector>

#include "adapters/virtual/language/scenario.h"
#include "adapters/virtual/recording/recorded_call.h"

/// What went over the ports, put together from the calls of a recording.
class RecordedPorts {
  public:
    /// Calls are given in the order of their lines.
    void See(const RecordedCall& call);

    /// Takes what went over a port; empty when it was never opened.
    std::vector<RecordedOpening> Take(const std::string& port);

    /// The ports that nobody has taken.
    std::vector<std::string> Left() const;

  private:
    struct Port {
        std::vector<RecordedOpening> openings;
        ScenarioTime cause{0}; // of what comes next
    };

    static void Open(Port& port, const RecordedCall& call);
    static void Write(Port& port, const RecordedCall& call);
    static void Read(Port& port, const RecordedCall& call);

    std::map<std::string, Port> m_Ports;
};

#endif
