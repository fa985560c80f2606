// SPDX-License-Identifier: MIT
//
// What the virtual devices are, as written in a scenario file (see README.md).
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

enum class FarEndKind { External, Silent, Echo, At, Periodic };

struct PortSpec {
    std::string name;
    std::string mode; // empty: the port is there in every mode of its device
    int32_t proposedId = 0;
    FarEndKind farEnd = FarEndKind::External;
    bool echo = true;                           // At: sends commands back before the answer
    std::map<std::string, std::string> replies; // At: command in capitals to up to 1,024 bytes
    std::string send;                           // Periodic: "{n}" becomes a running number
    int everyMs = 1000;                         // Periodic
};

struct DeviceSpec {
    std::string name;
    std::string text;
    std::string mode; // the mode that the device starts in
    bool present = true;
    std::vector<PortSpec> ports;
};

struct Scenario {
    std::vector<DeviceSpec> devices;
};

struct ScenarioResult {
    Scenario scenario; // empty when there is a mistake
    std::string error; // "file:line: reason", empty when all is well
};

/// Reads a scenario's text. The file's name is for the error only. A line has at most 4,096 bytes
/// and 64 dots, values are nested at most 16 deep: the text is read on a stack of the host, which
/// may be small.
ScenarioResult ReadScenario(const std::string& text, const std::string& fileName);

/// The scenario of the file that KOVASMGR_VIRTUAL_SCENARIO names, or the built-in one.
ScenarioResult LoadScenario();

/// Whether a port belongs to a mode of its device.
bool IsInMode(const PortSpec& port, const std::string& mode);

/// The port's name with what may not stand in a file's name replaced by '_'.
std::string LinkName(const std::string& portName);

#endif
